#include "support/testaudio.h"

#include <QFile>
#include <QMap>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <fileref.h>
#include <id3v2tag.h>
#include <mpegfile.h>
#include <textidentificationframe.h>
#include <tpropertymap.h>

#include <gtest/gtest.h>

#include <csignal>
#include <numeric>
#include <sys/resource.h>

namespace TestAudio {

namespace {

QTemporaryDir &folder()
{
    static QTemporaryDir dir;
    return dir;
}

// Runs a command line; %1, %2 ... in it stand for the paths, which may hold blanks.
QByteArray run(const QString &command, const QStringList &paths, QByteArray *errors = nullptr)
{
    QStringList arguments = QProcess::splitCommand(command);
    for (QString &argument : arguments) {
        for (qsizetype i = 0; i < paths.size(); ++i)
            argument.replace(u'%' + QString::number(i + 1), paths[i]);
    }
    QProcess process;
    process.start(arguments.takeFirst(), arguments);
    const bool done = process.waitForFinished(60000);
    const QByteArray stderrText = process.readAllStandardError();
    EXPECT_TRUE(done && process.exitCode() == 0) << command.toStdString() << ": " << stderrText.toStdString();
    if (errors)
        *errors = stderrText;
    return process.readAllStandardOutput();
}

// Three seconds of pink noise under a tone: frames of varying content.
QString source(int channels, int rate)
{
    const QString path = folder().filePath(QStringLiteral("source-%1-%2.wav").arg(channels).arg(rate));
    if (!QFile::exists(path))
        run(QStringLiteral(
                "ffmpeg -v error -f lavfi -i anoisesrc=d=3:c=pink:a=0.3 -f lavfi -i sine=f=330:d=3 "
                "-filter_complex amix=inputs=2 -ac %1 -ar %2 %3"),
            {QString::number(channels), QString::number(rate), path});
    return path;
}

struct Recipe
{
    Clip clip;
    const char *name;
    StreamFormat format;
    int channels, rate;
    const char *command; // %1 the source, %2 the output
};

const Recipe Recipes[] = {
    {Clip::Mp3, "mp3", StreamFormat::Mp3, 2, 44100, "lame --quiet -t -b 128 %1 %2"},
    {Clip::Mp3At320, "mp3-320", StreamFormat::Mp3, 2, 44100, "lame --quiet -t -b 320 %1 %2"},
    {Clip::Mp3Mono22k, "mp3-22k", StreamFormat::Mp3, 1, 22050, "lame --quiet -t -b 64 %1 %2"},
    {Clip::Mp3Mono11k, "mp3-11k", StreamFormat::Mp3, 1, 11025, "lame --quiet -t -b 32 %1 %2"},
    {Clip::Adts, "aac", StreamFormat::Aac, 2, 44100, "ffmpeg -v error -i %1 -c:a aac -b:a 96k -f adts %2"},
    {Clip::AdtsMono22k, "aac-22k", StreamFormat::Aac, 1, 22050, "ffmpeg -v error -i %1 -c:a aac -f adts %2"},
    {Clip::Vorbis, "vorbis", StreamFormat::Ogg, 2, 44100, "oggenc -Q -b 128 -o %2 %1"},
    {Clip::Opus, "opus", StreamFormat::Ogg, 2, 44100, "ffmpeg -v error -i %1 -c:a libopus -f ogg %2"},
};

const Recipe &recipe(Clip clip)
{
    return *std::find_if(std::begin(Recipes), std::end(Recipes),
                         [clip](const Recipe &r) { return r.clip == clip; });
}

QByteArray probe(const QString &entries, const QString &path)
{
    return run(QStringLiteral("ffprobe -v error -select_streams a -show_entries %1 -of csv=p=0 %2"),
               {entries, path});
}

} // namespace

QString clipName(Clip clip)
{
    return QString::fromLatin1(recipe(clip).name);
}

const Encoded &encoded(Clip clip)
{
    static QMap<Clip, Encoded> made;
    if (!made.contains(clip)) {
        const Recipe &how = recipe(clip);
        const QString out = folder().filePath(clipName(clip));
        run(QString::fromLatin1(how.command), {source(how.channels, how.rate), out});
        QFile file(out);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << out.toStdString();
        made[clip] = {how.format, out, file.readAll()};
    }
    return made[clip];
}

QString writeFile(const QString &name, const QByteArray &bytes)
{
    const QString path = folder().filePath(name);
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size()) << path.toStdString();
    return path;
}

QList<Packet> packets(const QString &path)
{
    QList<Packet> found;
    for (const QByteArray &line : probe(QStringLiteral("packet=pts_time,pos"), path).split('\n')) {
        const QList<QByteArray> fields = line.trimmed().split(',');
        if (fields.size() == 2)
            found.append({fields[1].toLongLong(), fields[0].toDouble()});
    }
    return found;
}

QList<qint64> frameStarts(const Encoded &audio)
{
    QList<qint64> starts;
    if (audio.format == StreamFormat::Ogg) {
        for (qsizetype at = audio.bytes.indexOf("OggS"); at >= 0; at = audio.bytes.indexOf("OggS", at + 1))
            starts.append(at);
    } else {
        for (const Packet &packet : packets(audio.path))
            starts.append(packet.pos);
    }
    return starts;
}

double decodedSeconds(const QString &path)
{
    // Each frame's sample count, then the stream's sample rate.
    QList<qint64> values;
    for (const QByteArray &line :
         probe(QStringLiteral("frame=nb_samples:stream=sample_rate"), path).split('\n'))
        if (!line.trimmed().isEmpty())
            values.append(line.trimmed().toLongLong());
    if (values.size() < 2)
        return 0;
    const double rate = double(values.takeLast());
    return double(std::accumulate(values.begin(), values.end(), qint64(0))) / rate;
}

QString decodeErrors(const QString &path)
{
    QByteArray errors;
    run(QStringLiteral("ffmpeg -v error -i %1 -f null -"), {path}, &errors);
    return QString::fromUtf8(errors);
}

QStringList readTags(const QString &path, StreamFormat format)
{
    TagLib::PropertyMap map;
    if (format == StreamFormat::Ogg) {
        const TagLib::FileRef file(QFile::encodeName(path).constData());
        if (!file.isNull())
            map = file.file()->properties();
    } else if (TagLib::MPEG::File file(QFile::encodeName(path).constData(), false); file.ID3v2Tag()) {
        EXPECT_EQ(file.ID3v2Tag()->header()->majorVersion(), 4u);
        for (TagLib::ID3v2::Frame *frame : file.ID3v2Tag()->frameList()) {
            const auto *text = dynamic_cast<TagLib::ID3v2::TextIdentificationFrame *>(frame);
            EXPECT_TRUE(!text || text->textEncoding() == TagLib::String::UTF8);
        }
        map = file.ID3v2Tag()->properties();
    }
    QStringList values;
    for (const char *key : {"ARTIST", "TITLE", "ALBUM", "DATE", "COMMENT", "RECORDING", "ENCODEDBY"})
        values << QString::fromStdString(map[key].toString().to8Bit(true));
    // TagLib shows an ID3v2 time with a blank where the frame holds the "T".
    values[3].replace(u' ', u'T');
    return values;
}

qsizetype id3Size(const QByteArray &bytes)
{
    if (bytes.size() < 10 || !bytes.startsWith("ID3"))
        return 0;
    qsizetype size = 0;
    for (int i = 6; i < 10; ++i)
        size = (size << 7) | (quint8(bytes[i]) & 0x7F);
    return size + 10;
}

QByteArray randomBytes(qsizetype size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(random.bounded(256));
    return bytes;
}

FileSizeLimit::FileSizeLimit(qint64 bytes)
{
    // Past the limit a write fails with EFBIG instead of ending the process.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    m_saved = qint64(limit.rlim_cur);
    limit.rlim_cur = rlim_t(bytes);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
}

FileSizeLimit::~FileSizeLimit()
{
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = rlim_t(m_saved);
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace TestAudio
