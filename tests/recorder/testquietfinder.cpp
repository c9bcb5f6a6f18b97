#include "recorder/quietfinder.h"

#include "recorder/loudnessenvelope.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

namespace {

// A stretch of steady level in dBFS (a square wave of that RMS); none: no
// samples at all, as where a decoder gave nothing.
struct Stretch
{
    double seconds;
    std::optional<double> db;
};

LoudnessEnvelope envelopeOf(const std::vector<Stretch> &stretches)
{
    constexpr int Rate = 2000;
    LoudnessEnvelope loudness;
    double at = 0;
    for (const Stretch &s : stretches) {
        if (s.db) {
            const auto amplitude = static_cast<float>(std::pow(10.0, *s.db / 20));
            std::vector<float> samples(static_cast<size_t>(std::lround(s.seconds * Rate)));
            for (size_t i = 0; i < samples.size(); ++i)
                samples[i] = i % 2 ? amplitude : -amplitude;
            loudness.add(at, Rate, samples);
        }
        at += s.seconds;
    }
    return loudness;
}

TEST(QuietFinderTest, FindsTheQuietMomentOrSaysItFoundNone)
{
    constexpr double Loud = -10, Silent = -90;
    using Q = CutQuality;
    const struct
    {
        const char *what;
        std::vector<Stretch> stretches;
        double expected;
        Q quality;
        double time;
    } rows[] = {
        {"the lead-in before the next song", {{3, Loud}, {0.8, Silent}, {3, Loud}}, 5, Q::Silence, 3.6},
        {"a short gap is cut in its middle", {{3, Loud}, {0.3, Silent}, {3, Loud}}, 5, Q::Silence, 3.15},
        {"the longest run wins",
         {{1, Loud}, {0.4, Silent}, {2, Loud}, {0.6, -50}, {2, Loud}},
         1,
         Q::Silence,
         3.8},
        {"equal runs: the nearer",
         {{1, Loud}, {0.5, Silent}, {2, Loud}, {0.5, Silent}, {2, Loud}},
         3.5,
         Q::Silence,
         3.8},
        {"under 300 ms is no gap", {{2, Loud}, {0.25, Silent}, {3, Loud}}, 4, Q::Quietest, 2.2},
        {"-40 dB is not silence", {{2, Loud}, {1, -40}, {3, Loud}}, 2.5, Q::Quietest, 2.5},
        {"a hole breaks a run",
         {{2, Loud}, {0.2, Silent}, {0.1, std::nullopt}, {0.2, Silent}, {2, Loud}},
         4.4,
         Q::Quietest,
         2.45},
        {"a crossfade has no quiet moment", {{2, Loud}, {1, -13}, {2, Loud}}, 2.7, Q::Title, 2.7},
        {"no sound at all", {{10, Silent}}, 4, Q::Title, 4},
        {"nothing decoded", {}, 4, Q::Title, 4},
    };
    for (const auto &row : rows) {
        const LoudnessEnvelope loudness = envelopeOf(row.stretches);
        const QuietMoment found = findQuietMoment(loudness, 0, 10, row.expected);
        EXPECT_EQ(found.quality, row.quality) << row.what;
        EXPECT_NEAR(found.time, row.time, 0.011) << row.what;
        EXPECT_TRUE(found.from <= found.time && found.time <= found.to) << row.what;
    }
}

TEST(QuietFinderTest, LooksOnlyInsideTheWindow)
{
    const LoudnessEnvelope loudness = envelopeOf({{2, -10}, {2, -90}, {2, -10}, {0.5, -90}, {2, -10}});
    const QuietMoment found = findQuietMoment(loudness, 5, 9, 1);
    EXPECT_EQ(found.quality, CutQuality::Silence);
    EXPECT_NEAR(found.time, 6.3, 0.011);
    EXPECT_EQ(findQuietMoment(loudness, 2.5, 3.5, 3).quality, CutQuality::Title);
}

} // namespace
