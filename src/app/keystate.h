#pragma once

#include "base/modifierkeys.h"

#include <QObject>

class QKeyEvent;

// Which of left Shift, right Shift and left Ctrl are held, asked at the moment
// of a click. Qt's modifiers cannot tell left from right, so an application
// event filter watches the native keys of every key event instead. Install it
// on the application before the first window shows.
class KeyState : public QObject, public ModifierKeys
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(KeyState)

public:
    explicit KeyState(QObject *parent = nullptr);

    bool isDown(Key key) const override;

    // The key a native key event stands for, by its key symbol (X11, Wayland)
    // or its virtual key and scan code (Windows); 0 for any other key.
    static int nativeKey(quint32 nativeScanCode, quint32 nativeVirtualKey);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void track(const QKeyEvent &event);
    void forgetReleased(Qt::KeyboardModifiers modifiers);

    bool m_leftShift = false;
    bool m_rightShift = false;
    bool m_leftControl = false;
};
