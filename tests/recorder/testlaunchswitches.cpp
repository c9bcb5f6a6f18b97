#include "recorder/launchswitches.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(LaunchSwitches, JoinsEachSwitchItsOwnWay)
{
    const LaunchSwitches s = ParseLaunchSwitches(
        u"-a http://x.example:8000/ live -w My  Station -s C:\\Music\\x.mp3 -t 30 -n -m -xs -v -q"_s);
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

TEST(LaunchSwitches, LaterLimitWinsCaseMattersAndOneCharacterGivesNothing)
{
    const LaunchSwitches s = ParseLaunchSwitches(u"-t 5 -b 700 -N -XH -xh -a"_s);
    EXPECT_EQ(s.Minutes, u"5");
    EXPECT_EQ(s.Megabytes, u"700");
    EXPECT_EQ(s.SelectedBreak, 1);
    EXPECT_FALSE(s.SingleSong);
    EXPECT_TRUE(s.Hibernate);
    EXPECT_EQ(s.Stream, u"");
    const LaunchSwitches none = ParseLaunchSwitches(u"-"_s);
    EXPECT_EQ(none.Stream, std::nullopt);
    EXPECT_EQ(none.SelectedBreak, std::nullopt);
    EXPECT_EQ(none.MonitorClicks, 0);
}
