#pragma once

#include "base/modifierkeys.h"

#include <QObject>

#include <functional>
#include <optional>

class QKeyEvent;
struct xcb_connection_t;

// Which of left Shift, right Shift and left Ctrl are held, asked at the moment
// of a click. Qt's modifiers cannot tell left from right, so the window system
// is asked where it can tell: X11 for the state of every key; on Wayland Qt's
// own modifier state, with the keys seen to tell left from right. Where
// neither answers, an application event filter follows the native keys of
// every key event. Install it on the application before the first window shows.
class KeyState : public QObject, public ModifierKeys
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(KeyState)

public:
    struct Held
    {
        bool leftShift = false;
        bool rightShift = false;
        bool leftControl = false;

        bool operator==(const Held &other) const = default;
    };
    // What the window system says is held now; nothing when it cannot tell.
    using WindowSystemQuery = std::function<std::optional<Held>(const Held &tracked)>;

    // Asks the window system the application runs on.
    explicit KeyState(QObject *parent = nullptr);
    // Asks query; an empty one leaves the tracked keys alone to answer.
    explicit KeyState(WindowSystemQuery query, QObject *parent = nullptr);

    bool isDown(Key key) const override;

    // The key a native key event stands for, by its key symbol (X11, Wayland)
    // or its virtual key and scan code (Windows); 0 for any other key.
    static int nativeKey(quint32 nativeScanCode, quint32 nativeVirtualKey);
    // The keys held on an X server, from its keymap; nothing when it does not answer.
    static std::optional<Held> queryX11(xcb_connection_t *connection);
    // Qt's modifiers say whether a Shift or Ctrl is held, the keys seen say
    // which. A Shift nobody saw pressed counts as the left one, so a guess
    // never picks the right-Shift command (emptying the catalogue).
    static Held fromModifiers(Qt::KeyboardModifiers modifiers, const Held &tracked);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void track(const QKeyEvent &event);
    void forgetReleased(Qt::KeyboardModifiers modifiers);

    WindowSystemQuery m_query;
    Held m_tracked;
};
