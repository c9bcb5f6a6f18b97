#include "app/keystate.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QProcess>
#include <QWidget>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

// A virtual X server of the test's own, whose keys are pressed through XTEST.
class XServer
{
public:
    XServer()
    {
        // Xvfb writes its display number to the descriptor given.
        m_server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                                QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        if (!m_server.waitForStarted(10000))
            return;
        while (!m_server.canReadLine() && m_server.waitForReadyRead(10000)) {
        }
        const QByteArray number = m_server.readLine().trimmed();
        if (number.isEmpty())
            return;
        m_connection = xcb_connect(QByteArray(":" + number).constData(), nullptr);
    }
    ~XServer()
    {
        if (m_connection)
            xcb_disconnect(m_connection);
        m_server.terminate();
        m_server.waitForFinished(10000);
    }
    XServer(const XServer &) = delete;
    XServer &operator=(const XServer &) = delete;

    xcb_connection_t *connection() const
    {
        return m_connection && !xcb_connection_has_error(m_connection) ? m_connection : nullptr;
    }
    // Presses or lets go of the first key that carries the symbol.
    void key(xcb_keysym_t symbol, bool down)
    {
        const xcb_setup_t *setup = xcb_get_setup(m_connection);
        const int count = setup->max_keycode - setup->min_keycode + 1;
        xcb_get_keyboard_mapping_reply_t *mapping = xcb_get_keyboard_mapping_reply(
            m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, quint8(count)), nullptr);
        ASSERT_NE(mapping, nullptr);
        const xcb_keysym_t *symbols = xcb_get_keyboard_mapping_keysyms(mapping);
        const int length = xcb_get_keyboard_mapping_keysyms_length(mapping);
        int code = 0;
        for (int i = 0; i < length && code == 0; ++i) {
            if (symbols[i] == symbol)
                code = setup->min_keycode + i / mapping->keysyms_per_keycode;
        }
        std::free(mapping);
        ASSERT_NE(code, 0) << symbol;
        xcb_test_fake_input(m_connection, down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, quint8(code),
                            XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(m_connection);
    }

private:
    QProcess m_server;
    xcb_connection_t *m_connection = nullptr;
};

std::string heldText(const ModifierKeys &keys)
{
    return {keys.isDown(KeyState::LeftShift) ? 'L' : '-', keys.isDown(KeyState::RightShift) ? 'R' : '-',
            keys.isDown(KeyState::LeftControl) ? 'C' : '-'};
}

TEST(KeyState, OnX11TheServerTellsWhichKeysAreHeldAlthoughNoKeyEventCame)
{
    XServer x;
    ASSERT_NE(x.connection(), nullptr) << "Xvfb did not start";
    xcb_connection_t *connection = x.connection();
    KeyState keys([connection](const KeyState::Held &) { return KeyState::queryX11(connection); });
    qApp->installEventFilter(&keys);
    const struct
    {
        xcb_keysym_t symbol;
        bool down;
        const char *held; // left Shift, right Shift, left Ctrl
    } steps[] = {{0xffe1, true, "L--"},  {0xffe3, true, "L-C"}, {0xffe4, true, "L-C"}, // right Ctrl: none
                 {0xffe1, false, "--C"}, {0xffe2, true, "-RC"}, {0xffe3, false, "-R-"},
                 {0xffe4, false, "-R-"}, {0xffe2, false, "---"}};
    for (const auto &step : steps) {
        ASSERT_NO_FATAL_FAILURE(x.key(step.symbol, step.down));
        EXPECT_EQ(heldText(keys), step.held) << step.symbol << ' ' << step.down;
    }
    // A key the program saw go down but whose release it missed is up, as the server says.
    QWidget target;
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier, 62, 0xffe2, 0);
    QApplication::sendEvent(&target, &press);
    EXPECT_EQ(heldText(keys), "---");
    EXPECT_EQ(KeyState::queryX11(nullptr), std::nullopt);
}

TEST(KeyState, QtsModifiersSayWhetherAndTheKeysSeenSayWhich)
{
    using H = KeyState::Held;
    const Qt::KeyboardModifiers none, shift = Qt::ShiftModifier, ctrl = Qt::ControlModifier;
    const struct
    {
        Qt::KeyboardModifiers modifiers;
        H tracked, held;
    } rows[] = {{shift, {}, {true, false, false}}, // held before the window had the focus: the left one
                {shift, {false, true, false}, {false, true, false}},
                {shift | ctrl, {true, true, false}, {true, true, true}},
                {none, {true, true, true}, {}}, // let go while another window had the keys
                {ctrl, {}, {false, false, true}}};
    for (const auto &row : rows)
        EXPECT_EQ(KeyState::fromModifiers(row.modifiers, row.tracked), row.held) << row.modifiers;
}

TEST(KeyState, NativeKeysAreToldApartByPlatformCodes)
{
    const struct
    {
        quint32 scanCode, virtualKey;
        int key;
    } rows[] = {
        {50, 0xffe1, KeyState::LeftShift}, // X11 and Wayland: key code, key symbol
        {62, 0xffe2, KeyState::RightShift},
        {37, 0xffe3, KeyState::LeftControl},
        {105, 0xffe4, 0},                  // right Ctrl
        {38, 0x61, 0},                     // a letter
        {65, 0xa0, 0},                     // no-break space: a key symbol equal to a virtual key number
        {0x2a, 0x10, KeyState::LeftShift}, // Windows: scan code, virtual key
        {0x36, 0x10, KeyState::RightShift},
        {0x1d, 0x11, KeyState::LeftControl},
        {0x11d, 0x11, 0}, // right Ctrl carries the extended bit
    };
    for (const auto &row : rows)
        EXPECT_EQ(KeyState::nativeKey(row.scanCode, row.virtualKey), row.key)
            << row.scanCode << '/' << row.virtualKey;
}

TEST(KeyState, PressesAndReleasesAreTrackedPerKeyAndMissedReleasesHealOnTheNextInput)
{
    KeyState keys{KeyState::WindowSystemQuery()};
    QWidget target;
    qApp->installEventFilter(&keys);
    const Qt::KeyboardModifiers none, shift = Qt::ShiftModifier, ctrl = Qt::ControlModifier;
    const struct
    {
        QEvent::Type type;
        Qt::KeyboardModifiers mods;
        quint32 code, keysym;
        const char *down; // left Shift, right Shift, left Ctrl
    } steps[] = {
        {QEvent::KeyPress, shift, 62, 0xffe2, "-R-"},
        {QEvent::KeyPress, shift, 50, 0xffe1, "LR-"},
        {QEvent::KeyPress, shift | ctrl, 37, 0xffe3, "LRC"},
        {QEvent::KeyRelease, ctrl, 50, 0xffe1, "-RC"}, // one Shift let go, the other held
        {QEvent::MouseButtonPress, shift | ctrl, 0, 0, "-RC"},
        // Let go while another program had the keyboard: the next input without the modifier shows it.
        {QEvent::MouseButtonPress, shift, 0, 0, "-R-"},
        {QEvent::KeyPress, shift | ctrl, 37, 0xffe3, "-RC"},
        {QEvent::KeyPress, shift | ctrl, 105, 0xffe4, "-RC"}, // right Ctrl is none of them
        {QEvent::KeyPress, none, 38, 0x61, "---"}};
    for (const auto &step : steps) {
        if (step.type == QEvent::MouseButtonPress) {
            QMouseEvent event(step.type, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
                              step.mods);
            QApplication::sendEvent(&target, &event);
        } else {
            const Qt::Key key = step.keysym == 0x61    ? Qt::Key_A
                                : step.keysym < 0xffe3 ? Qt::Key_Shift
                                                       : Qt::Key_Control;
            QKeyEvent event(step.type, key, step.mods, step.code, step.keysym, 0);
            QApplication::sendEvent(&target, &event);
        }
        EXPECT_EQ(heldText(keys), step.down) << step.type << ' ' << step.keysym;
    }
}

} // namespace
