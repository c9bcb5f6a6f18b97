#include "app/keystate.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

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

template <typename Reply> using ReplyPtr = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply> ReplyPtr<Reply> owned(Reply *reply)
{
    return ReplyPtr<Reply>(reply, &std::free);
}

KeyState::WindowSystemQuery platformQuery()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == u"xcb") {
        if (const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()) {
            xcb_connection_t *connection = x11->connection();
            return [connection](const KeyState::Held &) { return KeyState::queryX11(connection); };
        }
    }
    if (platform.startsWith(u"wayland")) {
        return [](const KeyState::Held &tracked) {
            return std::optional(KeyState::fromModifiers(QGuiApplication::queryKeyboardModifiers(), tracked));
        };
    }
    return {};
}

} // namespace

KeyState::KeyState(QObject *parent) : KeyState(platformQuery(), parent) {}

KeyState::KeyState(WindowSystemQuery query, QObject *parent) : QObject(parent), m_query(std::move(query)) {}

bool KeyState::isDown(Key key) const
{
    const Held held = (m_query ? m_query(m_tracked) : std::nullopt).value_or(m_tracked);
    switch (key) {
    case LeftShift:
        return held.leftShift;
    case RightShift:
        return held.rightShift;
    case LeftControl:
        return held.leftControl;
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

std::optional<KeyState::Held> KeyState::queryX11(xcb_connection_t *connection)
{
    if (!connection || xcb_connection_has_error(connection))
        return std::nullopt;
    const xcb_setup_t *setup = xcb_get_setup(connection);
    const xcb_keycode_t first = setup->min_keycode;
    const int count = setup->max_keycode - first + 1;
    const xcb_get_keyboard_mapping_cookie_t mappingAsked =
        xcb_get_keyboard_mapping(connection, first, quint8(count));
    const xcb_query_keymap_cookie_t keymapAsked = xcb_query_keymap(connection);
    const auto mapping = owned(xcb_get_keyboard_mapping_reply(connection, mappingAsked, nullptr));
    const auto keymap = owned(xcb_query_keymap_reply(connection, keymapAsked, nullptr));
    if (!mapping || !keymap)
        return std::nullopt;
    // Each key code has keysyms_per_keycode symbols; a held key counts by any of them.
    const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(mapping.get());
    const int perCode = mapping->keysyms_per_keycode;
    if (xcb_get_keyboard_mapping_keysyms_length(mapping.get()) < count * perCode)
        return std::nullopt;
    Held held;
    for (int code = first; code < first + count; ++code) {
        if (!(keymap->keys[code / 8] & (1 << (code % 8))))
            continue;
        for (int level = 0; level < perCode; ++level) {
            switch (symbols[(code - first) * perCode + level]) {
            case xkShiftL:
                held.leftShift = true;
                break;
            case xkShiftR:
                held.rightShift = true;
                break;
            case xkControlL:
                held.leftControl = true;
                break;
            default:
                break;
            }
        }
    }
    return held;
}

KeyState::Held KeyState::fromModifiers(Qt::KeyboardModifiers modifiers, const Held &tracked)
{
    Held held;
    if (modifiers & Qt::ShiftModifier) {
        held.rightShift = tracked.rightShift;
        held.leftShift = tracked.leftShift || !tracked.rightShift;
    }
    held.leftControl = bool(modifiers & Qt::ControlModifier);
    return held;
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
        m_tracked.leftShift = down;
        break;
    case RightShift:
        m_tracked.rightShift = down;
        break;
    case LeftControl:
        m_tracked.leftControl = down;
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
        m_tracked.leftShift = m_tracked.rightShift = false;
    if (!(modifiers & Qt::ControlModifier))
        m_tracked.leftControl = false;
}
