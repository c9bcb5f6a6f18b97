#include "app/messageboxprompt.h"
#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "app/startup.h"
#include "app/terminationwatcher.h"
#include "base/appinfo.h"
#include "recorder/launchswitches.h"
#include "ui/skin/themeapplier.h"

#include <QApplication>
#include <QFileInfo>
#include <QIcon>

#include <cstdio>

namespace {

// Whether a display server seems to be there: a Wayland socket, or an X
// display whose local socket exists (a remote one is taken on trust).
bool displayReachable()
{
    const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
    if (!wayland.isEmpty()) {
        const QString socket = QFileInfo(wayland).isAbsolute()
                                   ? wayland
                                   : qEnvironmentVariable("XDG_RUNTIME_DIR") + u'/' + wayland;
        if (QFileInfo::exists(socket))
            return true;
    }
    const QString display = qEnvironmentVariable("DISPLAY");
    if (display.isEmpty())
        return false;
    if (!display.startsWith(u':'))
        return true;
    const QString number = display.mid(1).section(u'.', 0, 0);
    return QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X") + number);
}

QStringList argumentWords(int argc, char *argv[])
{
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    return words;
}

// A command argument of two characters or more starts a recording at once.
bool startsRecording(int argc, char *argv[])
{
    return argumentWords(argc, argv).join(u' ').trimmed().size() >= 2;
}

} // namespace

int main(int argc, char *argv[])
{
    // Answered before any window, display or recording.
    switch (commandLineInfo(argumentWords(argc, argv))) {
    case CommandLineInfo::Help:
        std::fputs(launchHelpText().toLocal8Bit().constData(), stdout);
        return 0;
    case CommandLineInfo::Version:
        std::printf("%s %s\n", qPrintable(AppInfo::title), qPrintable(AppInfo::version()));
        return 0;
    case CommandLineInfo::None:
        break;
    }

    // A scheduled recording may be started by a user service manager that
    // knows no display: record without windows rather than fail to start.
    if (startsRecording(argc, argv) && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && !displayReachable())
        qputenv("QT_QPA_PLATFORM", "offscreen");

    QApplication app(argc, argv);
    QApplication::setApplicationName(AppInfo::title);
    QApplication::setDesktopFileName(QStringLiteral("tunecatch"));
    QApplication::setWindowIcon(QIcon::fromTheme(
        QStringLiteral("tunecatch"), QIcon(QCoreApplication::applicationDirPath() + QStringLiteral("/tunecatch.png"))));

    MessageBoxPrompt prompt;
    ThemeApplier themeApplier;
    ProgramParts parts(QCoreApplication::applicationDirPath(), prompt, TraceHook::fromEnvironment());
    parts.appearance.theme.setListener(&themeApplier);
    QtAppWindows windows(parts);
    Startup startup(parts, windows);
    windows.setStartup(&startup);
    TerminationWatcher watcher([&startup] { startup.terminate(); });

    QStringList words = QCoreApplication::arguments();
    words.removeFirst();
    if (!startup.SubMain(words.join(u' ')))
        return 1;
    if (startup.hasClosed()) // a signal arrived while start-up was still running
        return 0;
    return QApplication::exec();
}
