#include "skin/engine/zelvanef.h"

#include "skin/urffile.h"

#include <QApplication>
#include <QFile>
#include <QList>
#include <QPointer>
#include <QWidget>

#include <private/qcssparser_p.h>

#include <algorithm>

namespace {

// A window given a skin of its own, with the sheet it had before.
struct WindowSkin
{
    QPointer<QWidget> window;
    QString previousSheet;
};

// What the application looked like before the engine touched it. The engine
// is loaded once per process and speaks through plain functions, so this
// lives here rather than in an object the caller holds.
struct EngineState
{
    bool running = false;
    QString savedSheet;
    QList<WindowSkin> windows;
};

EngineState &engine()
{
    static EngineState state;
    return state;
}

QApplication *widgetApplication()
{
    return qobject_cast<QApplication *>(QCoreApplication::instance());
}

// Qt ignores a sheet it cannot parse with no more than a warning; reading it
// here first lets the caller know and keep the system look instead.
bool sheetParses(const QString &sheet)
{
    QCss::Parser parser(sheet);
    QCss::StyleSheet parsed;
    return parser.parse(&parsed);
}

// Reads and checks a skin file; the sheet on success, else the failure code.
int loadSheet(const char *skinFile, QString &sheet)
{
    if (!skinFile)
        return UrfSkin::Unreadable;
    UrfSkin skin = UrfSkin::read(QFile::decodeName(skinFile));
    if (skin.status != UrfSkin::Ok)
        return skin.status;
    if (!sheetParses(skin.sheet))
        return UrfSkin::BadSheet;
    sheet = std::move(skin.sheet);
    return 0;
}

bool matches(const QWidget *window, const QByteArray &name, int options)
{
    if (options & Zelvanef::MatchClass)
        return window->inherits(name.constData());
    return window->objectName() == QString::fromLocal8Bit(name);
}

void setWindowSheet(QWidget *window, const QString &sheet)
{
    QList<WindowSkin> &windows = engine().windows;
    auto known = std::find_if(windows.begin(), windows.end(),
                              [window](const WindowSkin &skin) { return skin.window == window; });
    if (known == windows.end())
        known = windows.insert(windows.end(), {window, window->styleSheet()});
    window->setStyleSheet(sheet.isEmpty() ? known->previousSheet : sheet);
    if (sheet.isEmpty())
        windows.erase(known);
}

} // namespace

extern "C" Q_DECL_EXPORT int SkinStart(const char *skinFile, int /*options*/)
{
    QApplication *app = widgetApplication();
    if (!app)
        return Zelvanef::NoApplication;
    QString sheet;
    if (const int failure = loadSheet(skinFile, sheet))
        return failure;

    EngineState &state = engine();
    if (!state.running) {
        state.savedSheet = app->styleSheet();
        state.running = true;
    }
    app->setStyleSheet(sheet);
    return 0;
}

extern "C" Q_DECL_EXPORT void SkinRemove()
{
    QApplication *app = widgetApplication();
    if (!app)
        return;
    EngineState &state = engine();
    for (const WindowSkin &skin : std::as_const(state.windows)) {
        if (skin.window)
            skin.window->setStyleSheet(skin.previousSheet);
    }
    state.windows.clear();
    if (!state.running)
        return;
    // Taking the sheet away gives every widget back its own palette. The
    // application palette is the program's colour theme, which may have
    // changed while skinned, so the engine leaves it alone.
    app->setStyleSheet(state.savedSheet);
    state.running = false;
}

extern "C" Q_DECL_EXPORT int SkinWindowSetEx(const char *windowName, const char *skinFile, int options)
{
    if (!widgetApplication())
        return Zelvanef::NoApplication;
    QString sheet;
    if (skinFile && *skinFile) {
        if (const int failure = loadSheet(skinFile, sheet))
            return failure;
    }
    const QByteArray name(windowName ? windowName : "");
    int found = 0;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (matches(window, name, options)) {
            setWindowSheet(window, sheet);
            ++found;
        }
    }
    return found ? 0 : Zelvanef::NoSuchWindow;
}

extern "C" Q_DECL_EXPORT int SkinWindowSet(const char *windowName, const char *skinFile)
{
    return SkinWindowSetEx(windowName, skinFile, 0);
}
