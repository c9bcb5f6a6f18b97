#include "ui/player/ucplaybar.h"

#include "controls/picturebutton.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class PlayBarTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        bar.resize(500, bar.sizeHint().height());
        bar.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&bar));
    }
    ucPictureButton *button(const char *name) const
    {
        auto *found = bar.findChild<ucPictureButton *>(QLatin1StringView(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    // The look as "<visible one of Play/Pause> <stop enabled>", with the parked one checked.
    std::string look() const
    {
        ucPictureButton *play = button("cmdDSPlay");
        ucPictureButton *pause = button("cmdDSPause");
        const bool playShown = play->x() == ucPlayBar::ShownLeft && pause->x() == ucPlayBar::ParkedLeft;
        const bool pauseShown = pause->x() == ucPlayBar::ShownLeft && play->x() == ucPlayBar::ParkedLeft;
        const std::string shown = playShown ? "Play" : pauseShown ? "Pause" : "both or neither";
        return shown + (button("cmdDSStop")->isEnabled() ? " stop" : " -");
    }
    ucPlayBar bar;
    QSignalSpy clicks{&bar, &ucPlayBar::Click};
};

TEST_F(PlayBarTest, PressesRaiseTheirKeysAndSetTheLook)
{
    const struct
    {
        const char *button;
        const char *key;
        std::string look;
    } presses[] = {{"cmdDSPlay", "Play", "Pause stop"}, {"cmdDSPause", "Pause", "Play stop"},
                   {"cmdDSPlay", "Play", "Pause stop"}, {"cmdDSStop", "Stop", "Play -"},
                   {"cmdDSMute", "Mute", "Play -"},     {"cmdDSMute", "NoMute", "Play -"}};
    EXPECT_EQ(look(), "Play -") << "shown stopped";
    for (const auto &press : presses) {
        clicks.clear();
        button(press.button)->click();
        ASSERT_EQ(clicks.size(), 1) << press.button;
        EXPECT_EQ(clicks[0][0].toString(), QLatin1StringView(press.key));
        EXPECT_EQ(look(), press.look) << "after " << press.key;
    }
}

TEST_F(PlayBarTest, SetStateChangesTheLookInAnyCaseAndRaisesNothing)
{
    const std::pair<const char *, std::string> states[] = {{"Play", "Pause stop"},
                                                           {"other", "Pause stop"},
                                                           {"STOP", "Play -"},
                                                           {"", "Play -"},
                                                           {"pLaY", "Pause stop"}};
    for (const auto &[state, expected] : states) {
        bar.SetState(QLatin1StringView(state));
        EXPECT_EQ(look(), expected) << state;
    }
    EXPECT_EQ(clicks.size(), 0);
}

TEST_F(PlayBarTest, PressOnlyReachesAButtonInPlaceAndEnabled)
{
    const struct
    {
        const char *key;
        const char *clicked; // the key raised, or none
        std::string look;
    } presses[] = {{"Pause", "", "Play -"},       {"Stop", "", "Play -"},       {"Play", "Play", "Pause stop"},
                   {"Play", "", "Pause stop"},     {"Pause", "Pause", "Play stop"}, {"Stop", "Stop", "Play -"},
                   {"Mute", "", "Play -"}};
    for (const auto &press : presses) {
        clicks.clear();
        bar.press(QLatin1StringView(press.key));
        EXPECT_EQ(clicks.isEmpty() ? QString() : clicks[0][0].toString(), QLatin1StringView(press.clicked))
            << press.key << " in " << look();
        EXPECT_EQ(look(), press.look) << press.key;
    }
    QSignalSpy volumes(&bar, &ucPlayBar::Volume);
    bar.setVolume(35);
    bar.setVolume(135);
    EXPECT_EQ(bar.volume(), ucPlayBar::VolumeMaximum);
    EXPECT_EQ(volumes.size(), 2);
}

} // namespace
