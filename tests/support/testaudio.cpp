#include "support/testaudio.h"

#include <QCryptographicHash>
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
#include <ogg/ogg.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <map>
#include <numeric>
#include <sys/resource.h>

using namespace Qt::StringLiterals;

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

std::vector<AudioFrame> probedFrames(const QString &path)
{
    std::vector<AudioFrame> frames;
    for (const QByteArray &line : probe(QStringLiteral("packet=pos,size,duration_time"), path).split('\n')) {
        const QList<QByteArray> fields = line.trimmed().split(',');
        if (fields.size() == 3)
            frames.push_back({fields[2].toLongLong(), fields[1].toInt(), fields[0].toDouble(), false});
    }
    return frames;
}

// Each page is a frame; header pages have granule position 0.
std::vector<AudioFrame> oggPages(const QByteArray &bytes, int sampleRate)
{
    std::vector<AudioFrame> frames;
    ogg_sync_state sync;
    ogg_sync_init(&sync);
    char *buffer = ogg_sync_buffer(&sync, bytes.size());
    std::memcpy(buffer, bytes.constData(), static_cast<size_t>(bytes.size()));
    ogg_sync_wrote(&sync, bytes.size());
    ogg_page page;
    qint64 offset = 0;
    ogg_int64_t granule = 0;
    while (ogg_sync_pageout(&sync, &page) == 1) {
        const ogg_int64_t end = std::max(granule, ogg_page_granulepos(&page));
        const auto length = static_cast<qint32>(page.header_len + page.body_len);
        frames.push_back({offset, length, static_cast<double>(end - granule) / sampleRate,
                          ogg_page_granulepos(&page) == 0});
        offset += length;
        granule = end;
    }
    ogg_sync_clear(&sync);
    return frames;
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

qint64 EncodedSound::offsetAt(double time) const
{
    double start = 0;
    for (const AudioFrame &frame : frames) {
        if (start + frame.duration > time)
            return frame.offset;
        start += frame.duration;
    }
    return bytes.size();
}

double SongPlan::start(int i) const
{
    double at = lead;
    for (int k = 0; k < i; ++k)
        at += length + gaps[static_cast<size_t>(k)];
    return at;
}

float SongPlan::operator()(double t) const
{
    // A song fades over the overlap with a crossfaded neighbour and switches
    // on and off where silence separates it.
    double sum = 0;
    for (int i = 0; i < songs(); ++i) {
        const double from = start(i), to = end(i);
        if (t < from || t >= to)
            continue;
        const double beat = std::abs(std::fmod(t - from, 2.0) - 1.075) < 0.075 ? 0.25 : 1;
        const double fadeIn = i > 0 ? -gaps[static_cast<size_t>(i - 1)] : 0;
        const double fadeOut = i + 1 < songs() ? -gaps[static_cast<size_t>(i)] : 0;
        double gain = 1;
        if (fadeIn > 0)
            gain = std::min(gain, (t - from) / fadeIn);
        if (fadeOut > 0)
            gain = std::min(gain, (to - t) / fadeOut);
        sum += beat * gain * 0.4 * (0.7 + 0.3 * std::sin(2 * M_PI * 3 * t)) *
               std::sin(2 * M_PI * (300 + 110 * i) * t);
    }
    return static_cast<float>(sum);
}

const EncodedSound &encodeSound(const Sound &sound, double seconds, const SoundFormat &format)
{
    // The samples go to a file a second at a time; their hash names the result.
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const QString raw = folder().filePath(QStringLiteral("sound.raw"));
    QFile out(raw);
    EXPECT_TRUE(out.open(QIODevice::WriteOnly)) << raw.toStdString();
    const auto count = static_cast<qsizetype>(seconds * format.sampleRate);
    std::vector<float> block;
    for (qsizetype i = 0; i < count;) {
        block.clear();
        for (const qsizetype end = std::min(count, i + format.sampleRate); i < end; ++i)
            block.insert(block.end(), format.channels, sound(static_cast<double>(i) / format.sampleRate));
        const QByteArrayView bytes(reinterpret_cast<const char *>(block.data()), std::ssize(block) * 4);
        hash.addData(bytes);
        out.write(bytes.data(), bytes.size());
    }
    out.close();
    hash.addData(QStringLiteral(" %1 %2 %3 %4")
                     .arg(static_cast<int>(format.format))
                     .arg(format.sampleRate)
                     .arg(format.channels)
                     .arg(format.kbps)
                     .toLatin1());
    static std::map<QByteArray, EncodedSound> made;
    const QByteArray key = hash.result();
    if (auto found = made.find(key); found != made.end())
        return found->second;
    const char *codec = "-c:a libmp3lame -write_xing 0 -id3v2_version 0 -f mp3";
    if (format.format == StreamFormat::Aac)
        codec = "-c:a aac -f adts";
    else if (format.format == StreamFormat::Ogg)
        codec = "-c:a libvorbis -page_duration 200000 -f ogg";
    const QString file = folder().filePath(QString::fromLatin1(key.toHex()));
    // %1 and %2 stand for the paths, which may hold blanks.
    run(u"ffmpeg -v error -f f32le -ar "_s + QString::number(format.sampleRate) + u" -ac "_s +
            QString::number(format.channels) + u" -i %1 -b:a "_s + QString::number(format.kbps) + u"k "_s +
            QString::fromLatin1(codec) + u" %2"_s,
        {raw, file});
    EncodedSound audio;
    QFile in(file);
    if (in.open(QIODevice::ReadOnly))
        audio.bytes = in.readAll();
    audio.frames =
        format.format == StreamFormat::Ogg ? oggPages(audio.bytes, format.sampleRate) : probedFrames(file);
    EXPECT_FALSE(audio.frames.empty()) << "no audio made";
    return made.emplace(key, std::move(audio)).first->second;
}

PlannedSongs runPlanner(CutPlanner &planner, const EncodedSound &audio,
                        const std::vector<std::pair<qint64, QString>> &titles, qint64 stopAt)
{
    constexpr qint64 Chunk = 4096;
    const qint64 end = stopAt < 0 ? audio.bytes.size() : std::min<qint64>(stopAt, audio.bytes.size());
    PlannedSongs out;
    auto frame = audio.frames.begin();
    auto title = titles.begin();
    const auto collect = [&] {
        for (CutPlanner::Output &piece : planner.takeOutput()) {
            if (auto *bytes = std::get_if<QByteArray>(&piece))
                out.bytes += *bytes;
            else
                out.cuts.push_back(std::get<SongCut>(piece));
        }
    };
    for (qint64 at = 0; at < end;) {
        qint64 next = std::min(at + Chunk, end);
        if (title != titles.end() && title->first > at)
            next = std::min(next, title->first);
        planner.addBytes(QByteArrayView(audio.bytes).sliced(at, next - at));
        at = next;
        for (; frame != audio.frames.end() && frame->offset + frame->length <= at; ++frame)
            planner.addFrame(*frame);
        for (; title != titles.end() && title->first <= at; ++title)
            planner.changeTitle(title->first, title->second);
        collect();
    }
    out.peakHeld = planner.peakBytesHeld();
    planner.flush();
    collect();
    return out;
}

} // namespace TestAudio
