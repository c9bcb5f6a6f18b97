#include "recorder/songframes.h"

#include "support/testaudio.h"

#include <gtest/gtest.h>

using namespace TestAudio;

namespace {

// A recording as the stream parser drives it: the stream in metadata
// intervals, a title change after some of them. Each song begins with the
// interval before its title (the ending song's last one).
struct Recording
{
    QList<QByteArray> files;
    QList<qint64> starts; // stream position each file was to begin at
    QList<qint64> ends;   // stream position when each file closed
    qsizetype mostHeld = 0;
};

Recording record(StreamFormat format, const QByteArray &stream, qsizetype interval, const QList<int> &changes)
{
    SongFrames frames(format, interval);
    Recording song;
    for (qsizetype at = 0, index = 0; at < stream.size(); at += interval, ++index) {
        const QByteArray bytes =
            frames.push(QByteArrayView(stream).sliced(at, std::min(interval, stream.size() - at)));
        if (!song.files.isEmpty())
            song.files.last() += bytes;
        if (changes.contains(index)) {
            const SongFrames::Cut cut = frames.cut(at);
            if (!song.files.isEmpty()) {
                song.files.last() += cut.tail;
                song.ends.append(frames.position());
            }
            song.files.append(cut.head);
            song.starts.append(at);
        }
        song.mostHeld = std::max(song.mostHeld, frames.heldBytes());
    }
    song.files.last() += frames.finish();
    song.ends.append(stream.size());
    return song;
}

} // namespace

TEST(SongFrames, SongFilesHoldWholeFramesAndPlayFromTheirFirstByte)
{
    for (const Clip clip : {Clip::Mp3, Clip::Adts, Clip::Vorbis, Clip::Opus}) {
        SCOPED_TRACE(clipName(clip).toStdString());
        const Encoded &audio = encoded(clip);
        // Opus pages hold a second: more than a short interval.
        const bool opus = clip == Clip::Opus;
        const QList<int> changes = opus ? QList<int>{0, 1} : QList<int>{0, 1, 3, 4};
        // The stream breaks off inside its last frame.
        const QByteArray stream = audio.bytes.chopped(100);
        const Recording song = record(audio.format, stream, opus ? 10000 : 5000, changes);
        const QList<qint64> frames = frameStarts(audio) << audio.bytes.size();
        // Ogg files begin with the stream's header pages: what precedes its first audio packet.
        const qint64 headers = audio.format == StreamFormat::Ogg ? packets(audio.path).first().pos : 0;
        ASSERT_EQ(song.files.size(), changes.size());
        for (qsizetype i = 0; i < song.files.size(); ++i) {
            const QByteArray &file = song.files[i];
            ASSERT_TRUE(file.startsWith(audio.bytes.first(headers))) << i;
            const QByteArray audioPart = file.sliced(headers);
            const qint64 from =
                *std::lower_bound(frames.begin(), frames.end(), std::max(song.starts[i], headers));
            const qint64 to = *(std::upper_bound(frames.begin(), frames.end(), song.ends[i]) - 1);
            EXPECT_EQ(audioPart, audio.bytes.sliced(from, to - from)) << i;
            EXPECT_EQ(decodeErrors(writeFile(QStringLiteral("song%1").arg(i), file)), QString()) << i;
        }
    }
}

TEST(SongFrames, BytesThatAreNotAudioPassAsTheyCome)
{
    // Random bytes, and an AAC stream announced as MP3: each file holds every
    // byte from where it was to begin to where it closed.
    for (const QByteArray &stream : {randomBytes(300000, 5), encoded(Clip::Adts).bytes}) {
        const Recording song = record(StreamFormat::Mp3, stream, 8000, {1, 2, 3});
        ASSERT_EQ(song.files.size(), 3);
        for (qsizetype i = 0; i < song.files.size(); ++i)
            EXPECT_EQ(song.files[i], stream.sliced(song.starts[i], song.ends[i] - song.starts[i])) << i;
    }
}

TEST(SongFrames, MemoryStaysBoundedOnALongStream)
{
    const QByteArray stream = encoded(Clip::Mp3).bytes.repeated(20);
    const Recording audio = record(StreamFormat::Mp3, stream, 16000, {3, 10, 40, 41});
    EXPECT_LT(audio.mostHeld, 16000 + 4 * 1441);
    const Recording noise = record(StreamFormat::Mp3, randomBytes(1000000, 8), 16000, {3, 40});
    EXPECT_LT(noise.mostHeld, 16000 + SongFrames::SearchLimit + 16000);
}

TEST(SongFrames, TimeAtAPositionCountsTheFramesBeforeIt)
{
    const Encoded &audio = encoded(Clip::Mp3);
    SongFrames frames(StreamFormat::Mp3, audio.bytes.size());
    EXPECT_TRUE(frames.push(audio.bytes).isEmpty());
    EXPECT_TRUE(frames.finish().isEmpty());
    const QList<Packet> reference = packets(audio.path);
    for (const qsizetype i : {0, 1, 50, 115}) {
        EXPECT_NEAR(frames.timeAt(reference[i].pos) / 1e9, reference[i].time, 1e-6) << i;
        EXPECT_NEAR(frames.timeAt(reference[i].pos + 1) / 1e9, reference[i].time + 1152 / 44100.0, 1e-6) << i;
    }
}

TEST(SongFrames, PushesOfAnySizeGiveTheSameFilesAndKeepMemoryNearTheHistory)
{
    const QByteArray stream = encoded(Clip::Mp3).bytes.repeated(4);
    const qsizetype history = 16000;
    QList<QByteArray> reference;
    for (const qsizetype size : {40000, 7000, 700, 90}) {
        SCOPED_TRACE(size);
        SongFrames frames(StreamFormat::Mp3, history);
        QList<QByteArray> files;
        qsizetype mostHeld = 0;
        // A song begins 10000 bytes before every 50000th byte, when the stream is there.
        for (qsizetype at = 0, next = 10000; at < stream.size();) {
            const qsizetype length = std::min({size, stream.size() - at, next - at});
            const QByteArray bytes = frames.push(QByteArrayView(stream).sliced(at, length));
            at += length;
            if (!files.isEmpty())
                files.last() += bytes;
            if (at == next) {
                const SongFrames::Cut cut = frames.cut(at - 10000);
                if (!files.isEmpty())
                    files.last() += cut.tail;
                files.append(cut.head);
                next += 50000;
            }
            mostHeld = std::max(mostHeld, frames.heldBytes());
        }
        files.last() += frames.finish();
        EXPECT_LT(mostHeld, history + history / 8 + 4 * 1441);
        if (reference.isEmpty())
            reference = files;
        EXPECT_EQ(files.size(), reference.size());
        EXPECT_TRUE(files == reference);
    }
}
