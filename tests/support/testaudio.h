#pragma once

#include "recorder/streamformat.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <ostream>

// Readable test failures.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

// Real encoded audio for the output chain's tests, made on first use by
// Debian's encoders (lame, ffmpeg, oggenc) into a temporary folder that lives
// as long as the test program, and what ffmpeg reads back from files.
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

} // namespace TestAudio
