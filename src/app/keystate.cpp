#include "app/keystate.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace {

// X keysyms, which Wayland's xkb keymaps share.
constexpr quint32 xkShiftL = 0xffe1;
constexpr quint32 xkShiftR = 0xffe2;
constexpr quint32 xkControlL = 0xffe3;

// Windows reports both Shift keys as VK_SHIFT and both Ctrl keys as
// VK_CONTROL; the scan code tells them apart (right Ctrl carries the
// extended bit).
constexpr quint32 vkShift = 0x10;
constexpr quint32 vkControl = 0x11;
constexpr quint32 scanShiftL = 0x2a;
constexpr quint32 scanShiftR = 0x36;
constexpr quint32 scanControlL = 0x1d;

} // namespace

KeyState::KeyState(QObject *parent) : QObject(parent) {}

bool KeyState::isDown(Key key) const
{
    switch (key) {
    case LeftShift:
        return m_leftShift;
    case RightShift:
        return m_rightShift;
    case LeftControl:
        return m_leftControl;
    }
    return false;
}

int KeyState::nativeKey(quint32 nativeScanCode, quint32 nativeVirtualKey)
{
    switch (nativeVirtualKey) {
    case xkShiftL:
        return LeftShift;
    case xkShiftR:
        return RightShift;
    case xkControlL:
        return LeftControl;
    case vkShift:
        if (nativeScanCode == scanShiftL)
            return LeftShift;
        return nativeScanCode == scanShiftR ? RightShift : 0;
    case vkControl:
        return nativeScanCode == scanControlL ? LeftControl : 0;
    default:
        return 0;
    }
}

bool KeyState::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        track(*static_cast<QKeyEvent *>(event));
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        forgetReleased(static_cast<QMouseEvent *>(event)->modifiers());
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void KeyState::track(const QKeyEvent &event)
{
    const bool down = event.type() == QEvent::KeyPress;
    switch (nativeKey(event.nativeScanCode(), event.nativeVirtualKey())) {
    case LeftShift:
        m_leftShift = down;
        break;
    case RightShift:
        m_rightShift = down;
        break;
    case LeftControl:
        m_leftControl = down;
        break;
    default:
        // Qt reports a modifier key's own event without its modifier, so
        // only other keys tell what is held.
        if (down && event.key() != Qt::Key_Shift && event.key() != Qt::Key_Control)
            forgetReleased(event.modifiers());
        break;
    }
}

// A key released while another program had the keyboard never reaches us;
// any later event whose modifiers lack Shift or Ctrl shows it is up.
void KeyState::forgetReleased(Qt::KeyboardModifiers modifiers)
{
    if (!(modifiers & Qt::ShiftModifier))
        m_leftShift = m_rightShift = false;
    if (!(modifiers & Qt::ControlModifier))
        m_leftControl = false;
}
