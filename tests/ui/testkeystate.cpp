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
        EXPECT_EQ(KeyState::NativeKey(row.scanCode, row.virtualKey), row.key)
            << row.scanCode << '/' << row.virtualKey;
}

class KeyEvents : public ::testing::Test
{
protected:
    void SetUp() override { qApp->installEventFilter(&keys); }

    void key(QEvent::Type type, Qt::Key qtKey, Qt::KeyboardModifiers mods, quint32 code, quint32 keysym)
    {
        QKeyEvent event(type, qtKey, mods, code, keysym, 0);
        QApplication::sendEvent(&target, &event);
    }
    void press(Qt::Key qtKey, Qt::KeyboardModifiers mods, quint32 code, quint32 keysym)
    {
        key(QEvent::KeyPress, qtKey, mods, code, keysym);
    }
    void mousePress(Qt::KeyboardModifiers mods)
    {
        QMouseEvent event(QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton,
                          Qt::LeftButton, mods);
        QApplication::sendEvent(&target, &event);
    }
    std::string down() const
    {
        return {keys.IsDown(KeyState::LeftShift) ? 'L' : '-', keys.IsDown(KeyState::RightShift) ? 'R' : '-',
                keys.IsDown(KeyState::LeftControl) ? 'C' : '-'};
    }

    KeyState keys;
    QWidget target;
};

TEST_F(KeyEvents, PressesAndReleasesAreTrackedPerKeyAndMissedReleasesHealOnTheNextInput)
{
    press(Qt::Key_Shift, Qt::ShiftModifier, 62, 0xffe2);
    EXPECT_EQ(down(), "-R-");
    press(Qt::Key_Shift, Qt::ShiftModifier, 50, 0xffe1);
    press(Qt::Key_Control, Qt::ShiftModifier | Qt::ControlModifier, 37, 0xffe3);
    EXPECT_EQ(down(), "LRC");
    // Letting go of one Shift leaves the other held.
    key(QEvent::KeyRelease, Qt::Key_Shift, Qt::ControlModifier, 50, 0xffe1);
    EXPECT_EQ(down(), "-RC");
    mousePress(Qt::ShiftModifier | Qt::ControlModifier);
    EXPECT_EQ(down(), "-RC");

    // Released while another program had the keyboard: the next click without Ctrl shows it.
    mousePress(Qt::ShiftModifier);
    EXPECT_EQ(down(), "-R-");
    press(Qt::Key_A, Qt::NoModifier, 38, 0x61);
    EXPECT_EQ(down(), "---");
    // Right Ctrl is none of the three.
    press(Qt::Key_Control, Qt::ControlModifier, 105, 0xffe4);
    EXPECT_EQ(down(), "---");
}

} // namespace
