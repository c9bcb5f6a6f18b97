#pragma once

#include <QObject>

class QWidget;

// Follows the mouse entering and leaving a widget through an event filter,
// so a control can draw its hover state without overriding the widget's own
// event handlers.
class HoverTracker : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(HoverTracker)

public:
    // Watches widget, which also becomes the tracker's parent.
    explicit HoverTracker(QWidget *widget);

    bool isHovered() const { return m_hovered; }

signals:
    void hoverChanged(bool hovered);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setHovered(bool hovered);

    QWidget *m_widget;
    bool m_hovered = false;
};
