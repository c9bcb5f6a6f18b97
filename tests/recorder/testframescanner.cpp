#include "recorder/framescanner.h"

#include "support/testaudio.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace TestAudio;
using Kind = StreamPiece::Kind;

namespace {

struct Scan
{
    QList<StreamPiece> pieces;
    qsizetype mostHeld = 0;

    // Frames and header pages, in stream order.
    QList<qint64> frames() const
    {
        QList<qint64> found;
        for (const StreamPiece &piece : pieces)
            if (piece.kind != Kind::Other)
                found.append(piece.offset);
        return found;
    }
    // Every byte once, in order.
    bool whole(const QByteArray &stream) const
    {
        QByteArray joined;
        for (const StreamPiece &piece : pieces)
            joined += piece.offset == joined.size() ? piece.bytes : QByteArray("gap");
        return joined == stream;
    }
};

// Pushes the stream in chunks of random sizes, then finishes it.
Scan scan(StreamFormat format, const QByteArray &stream, quint32 seed = 1)
{
    const auto scanner = FrameScanner::create(format);
    QRandomGenerator random(seed);
    Scan result;
    for (qsizetype at = 0, size = 0; at < stream.size(); at += size) {
        size = std::min<qsizetype>(1 + random.bounded(6000), stream.size() - at);
        result.pieces += scanner->push(QByteArrayView(stream).sliced(at, size));
        result.mostHeld = std::max(result.mostHeld, scanner->heldBytes());
    }
    result.pieces += scanner->finish();
    return result;
}

} // namespace

TEST(FrameScanner, FindsEveryFrameOfRealAudioInAnyChunking)
{
    for (const Clip clip : {Clip::Mp3, Clip::Mp3At320, Clip::Mp3Mono22k, Clip::Mp3Mono11k, Clip::Adts,
                            Clip::AdtsMono22k, Clip::Vorbis, Clip::Opus}) {
        SCOPED_TRACE(clipName(clip).toStdString());
        const Encoded &audio = encoded(clip);
        const Scan result = scan(audio.format, audio.bytes);
        EXPECT_TRUE(result.whole(audio.bytes));
        EXPECT_EQ(result.frames(), frameStarts(audio));
        qint64 ns = 0;
        qsizetype largest = 0;
        for (const StreamPiece &piece : result.pieces) {
            ns += piece.durationNs;
            largest = std::max(largest, piece.bytes.size());
        }
        // Opus positions include the decoder's pre-skip (6.5 ms); the rest match to the sample.
        EXPECT_NEAR(ns / 1e9, decodedSeconds(audio.path), 0.007);
        EXPECT_LT(result.mostHeld, 2 * largest);
    }
    // ADTS frames that carry the header's checksum: two bytes more each.
    const Encoded &adts = encoded(Clip::Adts);
    const QList<qint64> starts = frameStarts(adts) << adts.bytes.size();
    QByteArray checked;
    for (qsizetype i = 0; i + 1 < starts.size(); ++i) {
        QByteArray frame = adts.bytes.sliced(starts[i], starts[i + 1] - starts[i]);
        const qsizetype length = frame.size() + 2;
        frame[1] = char(frame[1] & ~1);
        frame[3] = char((frame[3] & ~3) | (length >> 11));
        frame[4] = char(length >> 3);
        frame[5] = char((frame[5] & 0x1F) | ((length & 7) << 5));
        checked += frame.first(7) + QByteArray(2, '\0') + frame.sliced(7);
    }
    EXPECT_EQ(scan(StreamFormat::Aac, checked).frames().size(), starts.size() - 1);
}

TEST(FrameScanner, PassesWhatIsNotAudioAsOtherAndFindsTheAudioAgain)
{
    for (const Clip clip : {Clip::Mp3, Clip::Adts, Clip::Vorbis}) {
        SCOPED_TRACE(clipName(clip).toStdString());
        const Encoded &audio = encoded(clip);
        // Garbage, and audio that resumes mid-frame, as after a resynchronisation.
        const QByteArray second = audio.bytes.sliced(301);
        const QByteArray stream = randomBytes(20000, 1) + audio.bytes + randomBytes(5000, 2) + second;
        const Scan result = scan(audio.format, stream);
        EXPECT_TRUE(result.whole(stream));
        const QList<qint64> frames = result.frames();
        const auto within = [&frames](qint64 from, qint64 to) {
            return std::count_if(frames.begin(), frames.end(),
                                 [&](qint64 at) { return at >= from && at < to; });
        };
        const qsizetype reference = frameStarts(audio).size();
        // The frame before garbage is not confirmed, nor the first after it; the broken one is none.
        EXPECT_GE(within(20000, 20000 + audio.bytes.size()), reference - 1);
        EXPECT_GE(within(stream.size() - second.size(), stream.size()), reference - 3);
        EXPECT_EQ(within(20000, 20000 + audio.bytes.size()) +
                      within(stream.size() - second.size(), stream.size()),
                  frames.size());
    }
    // Random bytes, and another codec's audio (a content type that lies), have no frames.
    for (const StreamFormat format : {StreamFormat::Mp3, StreamFormat::Aac, StreamFormat::Ogg}) {
        for (quint32 seed = 1; seed <= 3; ++seed) {
            const Scan result = scan(format, randomBytes(100000, seed), seed);
            EXPECT_TRUE(result.whole(randomBytes(100000, seed)) && result.frames().isEmpty());
            EXPECT_LT(result.mostHeld, 70000);
        }
        for (const Clip clip : {Clip::Mp3, Clip::Adts, Clip::Vorbis}) {
            if (encoded(clip).format != format) {
                EXPECT_TRUE(scan(format, encoded(clip).bytes).frames().isEmpty())
                    << clipName(clip).toStdString();
            }
        }
    }
}

TEST(FrameScanner, AFileEndTakesTheWholeFramesOnly)
{
    for (const Clip clip : {Clip::Mp3, Clip::Adts, Clip::Vorbis}) {
        const Encoded &audio = encoded(clip);
        const QList<qint64> starts = frameStarts(audio);
        const qint64 frame = starts[starts.size() / 2];
        for (const qint64 end : {frame, frame + 2, frame + 40, starts[starts.size() / 2 + 1] - 1}) {
            SCOPED_TRACE(clipName(clip).toStdString() + " ends at " + std::to_string(end));
            const auto scanner = FrameScanner::create(audio.format);
            Scan result{scanner->push(QByteArrayView(audio.bytes).first(end))};
            result.pieces += scanner->takeComplete();
            EXPECT_EQ(result.frames(), starts.first(starts.indexOf(frame)));
            EXPECT_EQ(result.pieces.last().end(), frame);
            const QList<StreamPiece> rest = scanner->finish();
            EXPECT_EQ(rest.size(), end > frame ? 1 : 0);
            EXPECT_TRUE(rest.isEmpty() || (rest[0].kind == Kind::Other && rest[0].end() == end));
        }
    }
}

TEST(FrameScanner, OggFramesCarryTheHeadersOfTheirLink)
{
    // A chained stream: a Vorbis link, then an Opus one.
    const QByteArray chain = encoded(Clip::Vorbis).bytes + encoded(Clip::Opus).bytes;
    const qint64 link = encoded(Clip::Vorbis).bytes.size();
    const qint64 vorbisAudio = packets(encoded(Clip::Vorbis).path).first().pos;
    const qint64 opusAudio = link + packets(encoded(Clip::Opus).path).first().pos;
    for (const StreamPiece &piece : scan(StreamFormat::Ogg, chain).pieces) {
        if (piece.kind == Kind::Frame)
            EXPECT_EQ(piece.headers,
                      piece.offset < link ? chain.first(vorbisAudio) : chain.sliced(link, opusAudio - link));
        else
            EXPECT_TRUE(piece.offset < vorbisAudio || (piece.offset >= link && piece.offset < opusAudio));
    }
    // Joined in the middle: the first audio page has no time of its own, the later ones do.
    const QList<qint64> pages = frameStarts(encoded(Clip::Vorbis));
    const QByteArray joined = chain.first(pages[2]) + chain.sliced(pages[5], link - pages[5]);
    QList<qint64> durations;
    for (const StreamPiece &piece : scan(StreamFormat::Ogg, joined).pieces)
        durations.append(piece.durationNs);
    EXPECT_EQ(durations.first(3), QList<qint64>({0, 0, 0})); // two header pages, the first audio page
    EXPECT_GT(durations[3], 0);
    EXPECT_EQ(decodeErrors(writeFile(QStringLiteral("joined.ogg"), joined)), QString());
}
