#pragma once

#include "recorder/cutplanner.h"
#include "recorder/streamformat.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <ostream>
#include <vector>

// Readable test failures.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

// Real encoded audio for the output chain's tests, made on first use by
// Debian's encoders (lame, ffmpeg, oggenc) into a temporary folder that lives
// as long as the test program, and what ffmpeg reads back from files. Clips
// are fixed noise under a tone; songs with known gaps are made from any sound.
namespace TestAudio {

enum class Clip
{
    Mp3,        // MPEG-1 layer III, 128 kbit/s, 44.1 kHz stereo, no Xing frame
    Mp3At320,   // 320 kbit/s
    Mp3Mono22k, // MPEG-2, mono
    Mp3Mono11k, // MPEG-2.5, mono
    Adts,       // AAC-LC in ADTS, 44.1 kHz stereo
    AdtsMono22k,
    Vorbis, // Ogg Vorbis
    Opus,   // Ogg Opus
};

struct Encoded
{
    StreamFormat format;
    QString path;
    QByteArray bytes;
};

const Encoded &encoded(Clip clip);
QString clipName(Clip clip);

// A file in the shared temporary folder.
QString writeFile(const QString &name, const QByteArray &bytes);

// A frame (packet) of a file as ffprobe finds it: byte position and time.
struct Packet
{
    qint64 pos = 0;
    double time = 0;
};
QList<Packet> packets(const QString &path);
// Where a clip's frames begin by ffprobe (Ogg: where its pages begin).
QList<qint64> frameStarts(const Encoded &audio);
// Seconds of audio the file decodes to, by its decoded samples.
double decodedSeconds(const QString &path);
// What ffmpeg reports as errors decoding the file; empty when it decodes cleanly.
QString decodeErrors(const QString &path);

// The song fields of a file's tags as TagLib reads them: ARTIST, TITLE,
// ALBUM, DATE (with its "T"), COMMENT, RECORDING and ENCODEDBY, in that order;
// empty texts where a field is missing. MP3 and ADTS files must carry an
// ID3v2.4 tag in UTF-8 (checked); Ogg files Vorbis comments.
QStringList readTags(const QString &path, StreamFormat format);
// How many bytes an ID3v2 tag at the start of the bytes takes, 0 without one.
qsizetype id3Size(const QByteArray &bytes);

QByteArray randomBytes(qsizetype size, quint32 seed);

// A full disk, as far as this process sees it: while it lives, writing a file
// past the given size fails (the kernel's file size limit, which holds for
// root too).
class FileSizeLimit
{
public:
    explicit FileSizeLimit(qint64 bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    qint64 m_saved = 0;
};

// A sound as a function of time, in [-1, 1].
using Sound = std::function<float(double)>;

// How a sound is encoded (by ffmpeg: libmp3lame, aac in ADTS, libvorbis in Ogg
// pages of a fifth of a second, as streaming encoders flush them).
struct SoundFormat
{
    StreamFormat format = StreamFormat::Mp3;
    int sampleRate = 44100;
    int channels = 2;
    int kbps = 128;
};

// An encoded sound with its frames as ffprobe (MP3, ADTS) or libogg (Ogg
// pages) sees them.
struct EncodedSound
{
    QByteArray bytes;
    std::vector<AudioFrame> frames;
    // The offset of the frame that plays at `time`.
    qint64 offsetAt(double time) const;
};

// Encodes `seconds` of `sound`, the same in every channel. Results are kept
// for the test program. Fails the test (no frames) when an encoder is missing.
const EncodedSound &encodeSound(const Sound &sound, double seconds, const SoundFormat &format);

// Songs of tones with a beat and a softer moment (150 ms 12 dB down, 1 s
// into every 2 s), one after another, with silence between them; a
// negative gap crossfades them over that many seconds.
struct SongPlan
{
    std::vector<double> gaps = {1, 1};
    double length = 8;
    double lead = 0.5; // silence before the first song
    int songs() const { return static_cast<int>(gaps.size()) + 1; }
    // Where song `i` (from 0) begins and ends.
    double start(int i) const;
    double end(int i) const { return start(i) + length; }
    double total() const { return end(songs() - 1) + 0.5; }
    // The sound at time `t`.
    float operator()(double t) const;
};

// What the song writer would get from a planner.
struct PlannedSongs
{
    QByteArray bytes; // every byte let go, in order
    std::vector<SongCut> cuts;
    qsizetype peakHeld = 0;
};

// Streams `audio` through `planner` as a recorder would: in chunks, each
// frame reported once its bytes are in, each title right after the byte
// before its offset. Stops (with a flush) after `stopAt` bytes.
PlannedSongs runPlanner(CutPlanner &planner, const EncodedSound &audio,
                        const std::vector<std::pair<qint64, QString>> &titles, qint64 stopAt = -1);

} // namespace TestAudio
