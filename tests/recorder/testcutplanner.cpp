#include "recorder/cutplanner.h"

#include "recorder/titledelay.h"
#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace TestAudio;

namespace {

// Encoders delay their output a little (AAC by a frame) and cuts fall on
// frame boundaries.
double slack(const EncodedSound &audio)
{
    return 0.05 + std::ranges::max(audio.frames, {}, &AudioFrame::duration).duration;
}

// Song i's title sent `late` seconds after it begins.
std::vector<std::pair<qint64, QString>> titles(const SongPlan &plan, const EncodedSound &audio, double late)
{
    std::vector<std::pair<qint64, QString>> out;
    for (int i = 1; i < plan.songs(); ++i)
        out.emplace_back(audio.offsetAt(plan.start(i) + late), u"Song %1"_s.arg(i));
    return out;
}

// Nothing lost or doubled, cuts in order on frame boundaries.
void expectWhole(const PlannedSongs &songs, const EncodedSound &audio, qint64 stopAt = -1)
{
    EXPECT_TRUE(songs.bytes == (stopAt < 0 ? audio.bytes : audio.bytes.left(stopAt)));
    qint64 previous = -1;
    for (const SongCut &cut : songs.cuts) {
        EXPECT_GT(cut.offset, previous);
        previous = cut.offset;
        EXPECT_TRUE(
            cut.offset == songs.bytes.size() ||
            std::ranges::any_of(audio.frames, [&](const AudioFrame &f) { return f.offset == cut.offset; }))
            << cut.offset;
    }
}

// The first `count` cuts in the silence before the song their title names,
// a lead-in before its first note.
void expectCutsInGaps(const std::vector<SongCut> &cuts, const SongPlan &plan, int count, double slack)
{
    ASSERT_GE(cuts.size(), static_cast<size_t>(count));
    for (int i = 1; i <= count; ++i) {
        const SongCut &cut = cuts[static_cast<size_t>(i - 1)];
        EXPECT_EQ(cut.title, u"Song %1"_s.arg(i));
        EXPECT_EQ(cut.quality, CutQuality::Silence) << i;
        EXPECT_TRUE(plan.end(i - 1) <= cut.cutTime && cut.cutTime <= plan.start(i))
            << i << ": " << cut.cutTime;
        EXPECT_NEAR(cut.cutTime, plan.start(i) - QuietRules().leadIn, slack) << i;
    }
}

using CutPlannerTest = ProfileTest;

TEST_F(CutPlannerTest, CutsInTheGapWhetherTheTitleIsEarlyOrLate)
{
    // Songs long enough that a window sees one gap.
    const SongPlan plan{{0.8}, 12.5};
    const SoundFormat formats[] = {{StreamFormat::Mp3, 44100, 2, 128}, {StreamFormat::Mp3, 22050, 1, 32},
                                   {StreamFormat::Mp3, 44100, 2, 320}, {StreamFormat::Aac, 44100, 2, 128},
                                   {StreamFormat::Aac, 22050, 1, 48},  {StreamFormat::Ogg, 44100, 2, 112}};
    for (const SoundFormat &format : formats) {
        const EncodedSound &audio = encodeSound(plan, plan.total(), format);
        for (double late : {-2.0, 0.0, 3.0, 5.5}) {
            SCOPED_TRACE(
                u"codec %1 at %2 Hz, %3 kbit/s, title %4 s late"_s.arg(static_cast<int>(format.format))
                    .arg(format.sampleRate)
                    .arg(format.kbps)
                    .arg(late)
                    .toStdString());
            CutPlanner planner(format.format);
            const PlannedSongs songs = runPlanner(planner, audio, titles(plan, audio, late));
            expectWhole(songs, audio);
            ASSERT_EQ(songs.cuts.size(), 1u);
            expectCutsInGaps(songs.cuts, plan, 1, slack(audio));
            // Twelve seconds of window, the decoder's lead and a title's slack.
            EXPECT_LE(songs.peakHeld, 13.5 * format.kbps * 125 + 8192);
        }
    }
}

TEST_F(CutPlannerTest, LearnsTheDelayAndPlacesACrossfadeByIt)
{
    const SongPlan plan{{1, 1, 1, -3}};
    const EncodedSound &audio = encodeSound(plan, plan.total(), {});
    TitleDelay delay(u"Loopback FM"_s);
    CutPlanner planner(StreamFormat::Mp3, &delay);
    const PlannedSongs songs = runPlanner(planner, audio, titles(plan, audio, 2.5));
    expectWhole(songs, audio);
    ASSERT_EQ(songs.cuts.size(), 4u);
    EXPECT_EQ(delay.source(), TitleDelay::Source::Learnt);
    // The cut comes a lead-in before the first note.
    EXPECT_NEAR(delay.seconds(), 2.7, slack(audio));
    const SongCut &crossfade = songs.cuts[3];
    EXPECT_EQ(crossfade.quality, CutQuality::Title);
    EXPECT_NEAR(crossfade.cutTime, crossfade.titleTime - delay.seconds(), 0.03);
    expectCutsInGaps(songs.cuts, plan, 3, slack(audio));
}

TEST_F(CutPlannerTest, WithoutDecodingCutsAtTheFirstFrameAfterTheTitle)
{
    // No codec; AAC bytes taken for MP3; bytes the scanner found no frame in.
    const SongPlan plan;
    const EncodedSound &aac = encodeSound(plan, plan.total(), {StreamFormat::Aac});
    const EncodedSound unframed{aac.bytes, {}};
    const auto sent = titles(plan, aac, 1);
    for (const auto &[codec, audio] :
         {std::pair(std::optional<StreamFormat>(), &aac), std::pair(std::optional(StreamFormat::Mp3), &aac),
          std::pair(std::optional(StreamFormat::Aac), &unframed)}) {
        CutPlanner planner(codec);
        const PlannedSongs songs = runPlanner(planner, *audio, sent);
        EXPECT_TRUE(songs.bytes == aac.bytes);
        ASSERT_EQ(songs.cuts.size(), sent.size());
        for (size_t i = 0; i < sent.size(); ++i) {
            EXPECT_EQ(songs.cuts[i].offset, sent[i].first);
            EXPECT_EQ(songs.cuts[i].quality, CutQuality::Title);
        }
        EXPECT_EQ(planner.searching(), audio == &unframed);
        EXPECT_LE(songs.peakHeld, CutPlanner::TailLimit + 8192);
    }
}

TEST_F(CutPlannerTest, ADecoderErrorFallsBackForThatCutOnly)
{
    const SongPlan plan{{1, 1}};
    EncodedSound audio = encodeSound(plan, plan.total(), {StreamFormat::Aac});
    // The frame's header stays: the decoder takes the frame and fails on it.
    const qint64 broken = audio.offsetAt(plan.start(1) + 2) + 20;
    for (qint64 i = broken; i < broken + 1500; ++i)
        audio.bytes[i] = static_cast<char>(i * 7919 % 251);
    CutPlanner planner(StreamFormat::Aac);
    const PlannedSongs songs = runPlanner(planner, audio, titles(plan, audio, 0));
    expectWhole(songs, audio);
    ASSERT_EQ(songs.cuts.size(), 2u);
    EXPECT_EQ(songs.cuts[0].quality, CutQuality::Title);
    EXPECT_EQ(songs.cuts[0].offset, audio.offsetAt(plan.start(1)));
    EXPECT_EQ(songs.cuts[1].quality, CutQuality::Silence);
    EXPECT_TRUE(planner.searching());
}

TEST_F(CutPlannerTest, StoppingInsideAWindowLosesNothing)
{
    const SongPlan plan{{1, 1}};
    const EncodedSound &audio = encodeSound(plan, plan.total(), {});
    const auto sent = titles(plan, audio, 3);
    for (qint64 stopAt :
         {sent[1].first, audio.offsetAt(plan.start(2) + 4), audio.offsetAt(plan.start(2) - 0.3)}) {
        CutPlanner planner(StreamFormat::Mp3);
        const PlannedSongs songs = runPlanner(planner, audio, sent, stopAt);
        expectWhole(songs, audio, stopAt);
        const size_t cuts = stopAt >= sent[1].first ? 2 : 1;
        ASSERT_EQ(songs.cuts.size(), cuts);
        expectCutsInGaps(songs.cuts, plan, static_cast<int>(cuts), slack(audio));
        EXPECT_EQ(planner.bytesHeld(), 0);
    }
}

TEST_F(CutPlannerTest, TitlesEverySecondOrAtTheEdgesKeepCutsInOrder)
{
    const SongPlan plan{{1, 1}};
    const EncodedSound &audio = encodeSound(plan, plan.total(), {});
    std::vector<std::pair<qint64, QString>> sent{{audio.offsetAt(0.1), u"First"_s}};
    for (int second = 5; second < 20; ++second)
        sent.emplace_back(audio.offsetAt(second), u"Second %1"_s.arg(second));
    // A burst of a title every 150 bytes: more titles than frames, so
    // some have no audio and no song.
    for (int k = 0; k < 100; ++k)
        sent.emplace_back(audio.offsetAt(20) + 150 * k, u"Burst %1"_s.arg(k));
    sent.emplace_back(audio.offsetAt(plan.total() - 0.1), u"Last"_s);
    for (qsizetype limit : {CutPlanner::DefaultHeldLimit, qsizetype(40000)}) {
        CutPlanner planner(StreamFormat::Mp3, nullptr, {}, {}, limit);
        const PlannedSongs songs = runPlanner(planner, audio, sent);
        expectWhole(songs, audio);
        auto cut = songs.cuts.begin();
        for (const auto &[offset, title] : sent) {
            if (cut != songs.cuts.end() && cut->title == title)
                ++cut;
            else
                EXPECT_TRUE(title.startsWith(u"Burst"_s)) << title.toStdString();
        }
        EXPECT_EQ(cut, songs.cuts.end());
        EXPECT_GT(songs.cuts.size(), 50u);
        // Where frames are there to choose from, no cut reaches past the
        // midpoint to the next title.
        for (size_t i = 0; limit == CutPlanner::DefaultHeldLimit && i + 1 < songs.cuts.size() &&
                           songs.cuts[i + 1].title.startsWith(u"Second"_s);
             ++i)
            EXPECT_LE(songs.cuts[i].cutTime,
                      (songs.cuts[i].titleTime + songs.cuts[i + 1].titleTime) / 2 + 0.03)
                << i;
        EXPECT_LE(songs.peakHeld, limit + 4096);
    }
}

} // namespace
