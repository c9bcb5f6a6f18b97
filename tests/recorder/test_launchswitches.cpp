#include "recorder/launchswitches.h"

#include <gtest/gtest.h>

TEST(LaunchSwitches, JoinsEachSwitchItsOwnWay)
{
    const LaunchSwitches s = ParseLaunchSwitches(
        QStringLiteral("-a http://x.example:8000/ live -w My  Station -s C:\\Music\\x.mp3 -t 30 -n -m -xs -v -q"));
    EXPECT_EQ(s.Stream, u"http://x.example:8000/live");
    EXPECT_EQ(s.Station, u"My  Station");
    EXPECT_EQ(s.Save, u"C:\\Music\\x.mp3");
    EXPECT_EQ(s.Minutes, u"30");
    EXPECT_EQ(s.Megabytes, std::nullopt);
    EXPECT_EQ(s.SelectedBreak, 0);
    EXPECT_TRUE(s.SingleSong);
    EXPECT_TRUE(s.ShutDown);
    EXPECT_FALSE(s.Hibernate);
    EXPECT_EQ(s.MonitorClicks, 1);
    EXPECT_TRUE(s.Minimised);
}

TEST(LaunchSwitches, LaterLimitWinsAndCaseMatters)
{
    const LaunchSwitches s = ParseLaunchSwitches(QStringLiteral("-t 5 -b 700 -N -XH -xh -a"));
    EXPECT_EQ(s.Minutes, u"5");
    EXPECT_EQ(s.Megabytes, u"700");
    EXPECT_EQ(s.SelectedBreak, 1);
    EXPECT_FALSE(s.SingleSong);
    EXPECT_TRUE(s.Hibernate);
    EXPECT_EQ(s.Stream, u"");
}

TEST(LaunchSwitches, OneCharacterGivesNothing)
{
    const LaunchSwitches s = ParseLaunchSwitches(QStringLiteral("-"));
    EXPECT_EQ(s.Stream, std::nullopt);
    EXPECT_EQ(s.SelectedBreak, std::nullopt);
    EXPECT_EQ(s.MonitorClicks, 0);
    EXPECT_EQ(DefaultSaveTemplate, u".\\%STATION%_%DATE%_%TIME%.mp3");
}
