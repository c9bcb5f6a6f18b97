#include "app/keystate.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWidget>

#include <gtest/gtest.h>

namespace {

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
    KeyState keys;
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
        const std::string down{keys.isDown(KeyState::LeftShift) ? 'L' : '-',
                               keys.isDown(KeyState::RightShift) ? 'R' : '-',
                               keys.isDown(KeyState::LeftControl) ? 'C' : '-'};
        EXPECT_EQ(down, step.down) << step.type << ' ' << step.keysym;
    }
}

} // namespace
