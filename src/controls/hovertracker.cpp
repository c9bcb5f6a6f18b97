#include "controls/hovertracker.h"

#include <QEvent>
#include <QWidget>

HoverTracker::HoverTracker(QWidget *widget) : QObject(widget), m_widget(widget)
{
    widget->installEventFilter(this);
}

bool HoverTracker::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_widget) {
        switch (event->type()) {
        case QEvent::Enter:
            setHovered(true);
            break;
        case QEvent::Leave:
        case QEvent::Hide:
            setHovered(false);
            break;
        case QEvent::EnabledChange:
            // A disabled control receives no Leave: forget the mouse until it comes back.
            if (!m_widget->isEnabled())
                setHovered(false);
            break;
        default:
            break;
        }
    }
    return QObject::eventFilter(watched, event);
}

void HoverTracker::setHovered(bool hovered)
{
    if (hovered == m_hovered)
        return;
    m_hovered = hovered;
    emit hoverChanged(hovered);
}
