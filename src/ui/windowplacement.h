#pragma once

#include <QRect>
#include <QString>

#include <optional>

class QWidget;

// Where a window was left: kept in the settings as "x,y,width,height", with
// ",max" when it was maximised, and put back onto the screen as it is today.
namespace WindowPlacement {

struct Saved
{
    QRect rect; // the window's normal geometry, without its frame
    bool maximized = false;
};

QString toText(const Saved &saved);
// Nothing for text that is not four whole numbers (and the mark), or an empty size.
std::optional<Saved> fromText(const QString &text);
// rect no larger than available, and moved so that it lies inside it; never
// smaller than minimum.
QRect fitted(const QRect &rect, const QRect &available, const QSize &minimum);

// Puts the window where the setting key says, fitted onto the screen it is on
// (the primary screen when none); nothing when the setting is missing or unreadable.
void restore(QWidget &window, const QString &key);
void save(const QWidget &window, const QString &key);
// The window's size cut down to the screen it is on.
void keepOnScreen(QWidget &window);
// A shown window is also moved onto its screen; a new one only resized.
void keepInside(QWidget &window);

} // namespace WindowPlacement
