#include "recorder/titledelay.h"

#include "base/settingsstore.h"
#include "support/tempprofile.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class TitleDelayTest : public ProfileTest
{
protected:
    const QString station = u"Radio/One: http://a.example/x?y"_s;
};

TEST_F(TitleDelayTest, LearnsTheMedianOfTheLastCutsOnceThreeAreKnown)
{
    TitleDelay delay(station);
    const struct
    {
        double seen;
        TitleDelay::Source source;
        double seconds;
        QString text;
    } steps[] = {
        {2.3, TitleDelay::Source::NotYetKnown, 0,
         u"Title delay: not known yet (1 of 3 songs cut at silence)"_s},
        {40, TitleDelay::Source::NotYetKnown, 0,
         u"Title delay: not known yet (1 of 3 songs cut at silence)"_s},
        {2.6, TitleDelay::Source::NotYetKnown, 0,
         u"Title delay: not known yet (2 of 3 songs cut at silence)"_s},
        {2.42, TitleDelay::Source::Learnt, 2.42, u"Title delay: 2.4 s, learnt"_s},
        {9, TitleDelay::Source::Learnt, 2.51, u"Title delay: 2.5 s, learnt"_s},
        {-1, TitleDelay::Source::Learnt, 2.42, u"Title delay: 2.4 s, learnt"_s},
        {8, TitleDelay::Source::Learnt, 2.6, u"Title delay: 2.6 s, learnt"_s},
        {7, TitleDelay::Source::Learnt, 7, u"Title delay: 7.0 s, learnt"_s},
    };
    for (const auto &step : steps) {
        delay.learn(step.seen);
        EXPECT_EQ(delay.source(), step.source) << step.seen;
        EXPECT_NEAR(delay.seconds(), step.seconds, 1e-9) << step.seen;
        EXPECT_EQ(delay.text(), step.text);
    }
    const TitleDelay again(station);
    EXPECT_EQ(again.seconds(), 7);
    EXPECT_EQ(TitleDelay(u"Radio/Two"_s).source(), TitleDelay::Source::NotYetKnown);
}

TEST_F(TitleDelayTest, ByHandUntilReset)
{
    TitleDelay delay(station);
    for (double seen : {3.0, 3.1, 3.2})
        delay.learn(seen);
    delay.setByHand(-1.5);
    delay.learn(5);
    EXPECT_EQ(delay.text(), u"Title delay: -1.5 s, set by hand"_s);
    EXPECT_EQ(TitleDelay(station).seconds(), -1.5);
    delay.setByHand(99);
    EXPECT_EQ(TitleDelay(station).seconds(), TitleDelay::Limit);
    delay.reset();
    EXPECT_EQ(delay.source(), TitleDelay::Source::NotYetKnown);
    const TitleDelay fresh(station);
    EXPECT_EQ(fresh.source(), TitleDelay::Source::NotYetKnown);
    EXPECT_EQ(fresh.seconds(), 0);
}

TEST_F(TitleDelayTest, IgnoresStoredValuesThatAreNotDelays)
{
    SettingsStore::saveSetting(u"TitleDelay/Loopback%20FM/Seen"_s, u"x 1.0 nan 2.0 1e9 3.0"_s);
    SettingsStore::saveSetting(u"TitleDelay/Loopback%20FM/ByHand"_s, u"soon"_s);
    const TitleDelay delay(u"Loopback FM"_s);
    EXPECT_EQ(delay.source(), TitleDelay::Source::Learnt);
    EXPECT_EQ(delay.seconds(), 2.0);
}

} // namespace
