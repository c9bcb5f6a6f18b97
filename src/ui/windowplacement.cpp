#include "ui/windowplacement.h"

#include "base/settingsstore.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <QStyle>
#include <QWidget>
#include <QWindow>

namespace WindowPlacement {

namespace {

QRect availableFor(const QWidget &window, const QRect &rect)
{
    QScreen *screen = QGuiApplication::screenAt(rect.center());
    if (!screen)
        screen = window.screen() ? window.screen() : QGuiApplication::primaryScreen();
    const QRect available = screen ? screen->availableGeometry() : rect;
    // The frame goes round the window: a shown window knows it, a new one
    // gets room for a usual title bar and border.
    QMargins frame(4, window.style()->pixelMetric(QStyle::PM_TitleBarHeight) + 4, 4, 4);
    if (window.isVisible() && window.windowHandle())
        frame = window.windowHandle()->frameMargins();
    return available.marginsRemoved(frame);
}

} // namespace

QString toText(const Saved &saved)
{
    const QRect &r = saved.rect;
    QString text = QStringLiteral("%1,%2,%3,%4").arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
    if (saved.maximized)
        text += QStringLiteral(",max");
    return text;
}

std::optional<Saved> fromText(const QString &text)
{
    QStringList parts = text.split(u',');
    Saved saved;
    if (parts.size() == 5 && parts.last() == u"max") {
        saved.maximized = true;
        parts.removeLast();
    }
    if (parts.size() != 4)
        return std::nullopt;
    int values[4] = {};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = parts[i].trimmed().toInt(&ok);
        if (!ok)
            return std::nullopt;
    }
    saved.rect = QRect(values[0], values[1], values[2], values[3]);
    if (saved.rect.width() <= 0 || saved.rect.height() <= 0)
        return std::nullopt;
    return saved;
}

QRect fitted(const QRect &rect, const QRect &available, const QSize &minimum)
{
    const QSize size = rect.size().boundedTo(available.size()).expandedTo(minimum);
    const int left = qMax(available.left(), qMin(rect.left(), available.right() + 1 - size.width()));
    const int top = qMax(available.top(), qMin(rect.top(), available.bottom() + 1 - size.height()));
    return {QPoint(left, top), size};
}

void restore(QWidget &window, const QString &key)
{
    const std::optional<Saved> saved = fromText(SettingsStore::getSetting(key));
    if (!saved) {
        keepOnScreen(window);
        return;
    }
    window.setGeometry(fitted(saved->rect, availableFor(window, saved->rect), window.minimumSize()));
    if (saved->maximized)
        window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

void save(const QWidget &window, const QString &key)
{
    const bool maximized = window.isMaximized();
    SettingsStore::saveSetting(key,
                               toText({maximized ? window.normalGeometry() : window.geometry(), maximized}));
}

void keepOnScreen(QWidget &window)
{
    // Only the size: where a new window goes is the window manager's choice.
    window.resize(
        fitted(window.geometry(), availableFor(window, window.geometry()), window.minimumSize()).size());
}

void keepInside(QWidget &window)
{
    if (!window.isVisible()) {
        keepOnScreen(window);
        return;
    }
    window.setGeometry(
        fitted(window.geometry(), availableFor(window, window.geometry()), window.minimumSize()));
}

} // namespace WindowPlacement
