#include "recorder/songcutter.h"

#include "base/settingsstore.h"
#include "recorder/songframes.h"
#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace TestAudio;

namespace {

// A recording of one file per song as the recorder makes it: the stream in
// chunks through a cutter into whole-frame song files, a title change at
// each of `titles`, and a drop (the cutter finished) at each of `drops`.
struct Recording
{
    QList<QByteArray> files;
    std::vector<SongCut> cuts;
    QByteArray written; // every byte the cutter let go, in order
    qsizetype peakHeld = 0;
};

Recording record(SongCutter &cutter, StreamFormat format, const QByteArray &stream,
                 const QList<qint64> &titles, const QList<qint64> &drops = {})
{
    Recording out;
    SongFrames frames(format, 16000);
    out.files.append(frames.cut(0).head);
    const auto collect = [&] {
        for (const SongCutter::Output &piece : cutter.takeOutput()) {
            if (const auto *bytes = std::get_if<QByteArray>(&piece)) {
                out.written += *bytes;
                out.files.last() += frames.push(*bytes);
                continue;
            }
            const SongCut &cut = std::get<SongCut>(piece);
            EXPECT_EQ(frames.position(), cut.offset);
            const SongFrames::Cut files = frames.cut(cut.offset);
            out.files.last() += files.tail;
            out.files.append(files.head);
            out.cuts.push_back(cut);
        }
    };
    for (qint64 at = 0; at < stream.size();) {
        qint64 next = std::min<qint64>(at + 4096, stream.size());
        for (qint64 mark : titles + drops)
            if (mark > at)
                next = std::min(next, mark);
        cutter.push(QByteArrayView(stream).sliced(at, next - at));
        at = next;
        if (titles.contains(at))
            cutter.changeTitle(u"Song %1"_s.arg(titles.indexOf(at) + 1));
        if (drops.contains(at))
            cutter.finish();
        collect();
    }
    out.peakHeld = cutter.peakBytesHeld();
    cutter.finish();
    collect();
    out.files.last() += frames.finish();
    return out;
}

QList<qint64> titlesAt(const SongPlan &plan, const EncodedSound &audio, double late)
{
    QList<qint64> out;
    for (int i = 1; i < plan.songs(); ++i)
        out.append(audio.offsetAt(plan.start(i) + late));
    return out;
}

using SongCutterTest = ProfileTest;

TEST_F(SongCutterTest, SongFilesBeginAtTheQuietMomentAndPlayWhole)
{
    const SongPlan plan{{1, 1}};
    for (const StreamFormat format : {StreamFormat::Mp3, StreamFormat::Aac, StreamFormat::Ogg}) {
        SCOPED_TRACE(formatName(format).toStdString());
        const EncodedSound &audio = encodeSound(plan, plan.total(), {format});
        SongCutter cutter(format, u"Loopback FM"_s, true);
        const Recording song = record(cutter, format, audio.bytes, titlesAt(plan, audio, 3));
        EXPECT_TRUE(song.written == audio.bytes);
        ASSERT_EQ(song.cuts.size(), 2u);
        ASSERT_EQ(song.files.size(), 3);
        for (int i = 0; i < 3; ++i) {
            const QString path = writeFile(u"song%1%2"_s.arg(i).arg(formatExtension(format)), song.files[i]);
            EXPECT_EQ(decodeErrors(path), QString()) << i;
            // A file plays from a lead-in before its song to a lead-in before the next.
            const double begins = i == 0 ? 0 : song.cuts[size_t(i - 1)].cutTime;
            const double ends = i == 2 ? plan.total() : song.cuts[size_t(i)].cutTime;
            EXPECT_NEAR(decodedSeconds(path), ends - begins, 0.1) << i;
            if (i > 0) {
                EXPECT_EQ(song.cuts[size_t(i - 1)].quality, CutQuality::Silence);
                EXPECT_TRUE(plan.end(i - 1) < begins && begins < plan.start(i)) << begins;
            }
        }
        EXPECT_TRUE(cutter.searching());
        EXPECT_LE(song.peakHeld, 13.5 * 128 * 125 + 8192);
    }
}

TEST_F(SongCutterTest, WithoutTheSearchCutsAtTheTitleAndHoldsLittle)
{
    const SongPlan plan{{1, 1}};
    const EncodedSound &audio = encodeSound(plan, plan.total(), {});
    const QList<qint64> titles{audio.offsetAt(3) + 10, audio.offsetAt(12) + 10};
    // The next whole frame after each title's byte.
    QList<qint64> expected;
    for (qint64 title : titles)
        expected.append(std::ranges::find_if(audio.frames, [&](const AudioFrame &f) {
                            return f.offset > title;
                        })->offset);
    SongCutter cutter(StreamFormat::Mp3, u"Loopback FM"_s, false);
    const Recording song = record(cutter, StreamFormat::Mp3, audio.bytes, titles);
    EXPECT_TRUE(song.written == audio.bytes);
    ASSERT_EQ(song.cuts.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(song.cuts[i].quality, CutQuality::Title);
        EXPECT_EQ(song.cuts[i].title, u"Song %1"_s.arg(i + 1));
        EXPECT_EQ(song.cuts[i].offset, expected[qsizetype(i)]);
    }
    EXPECT_FALSE(cutter.searching());
    EXPECT_LE(song.peakHeld, 8 * 1024);
}

TEST_F(SongCutterTest, ADropInsideAWindowLosesNothingAndTheNextConnectionGoesOn)
{
    const SongPlan plan{{1, 1}};
    const EncodedSound &audio = encodeSound(plan, plan.total(), {});
    const QList<qint64> titles = titlesAt(plan, audio, 2);
    // The connection drops a second after the first title, inside its window.
    const QList<qint64> drops{audio.offsetAt(plan.start(1) + 3)};
    SongCutter cutter(StreamFormat::Mp3, u"Loopback FM"_s, true);
    const Recording song = record(cutter, StreamFormat::Mp3, audio.bytes, titles, drops);
    EXPECT_TRUE(song.written == audio.bytes);
    ASSERT_EQ(song.cuts.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(song.cuts[i].quality, CutQuality::Silence) << i;
        EXPECT_TRUE(plan.end(int(i)) < song.cuts[i].cutTime && song.cuts[i].cutTime < plan.start(int(i) + 1));
    }
    EXPECT_EQ(cutter.bytesHeld(), 0);
}

TEST_F(SongCutterTest, TheSettingIsOnUnlessTurnedOff)
{
    EXPECT_TRUE(SongCutter::quietSearchSetting());
    SongCutter::saveQuietSearchSetting(false);
    EXPECT_FALSE(SongCutter::quietSearchSetting());
    SettingsStore::saveSetting(SettingsStore::CutAtQuietMoment, u"perhaps"_s);
    EXPECT_TRUE(SongCutter::quietSearchSetting());
    EXPECT_EQ(SongCutter::qualityNote(CutQuality::Silence), u"cut at silence"_s);
    EXPECT_EQ(SongCutter::qualityNote(CutQuality::Quietest), u"cut at silence"_s);
    EXPECT_EQ(SongCutter::qualityNote(CutQuality::Title), u"cut at title"_s);
}

} // namespace
