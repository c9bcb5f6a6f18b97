// What whole-frame song files with tags cost beside the plain write path, on
// the same stream: MP3 frames (128 kbit/s, 44.1 kHz headers, pseudo-random
// bodies), metadata every 16000 bytes and a new title every 3 MB, fed in 4 KB
// packets through the stream parser into real files.
//   plain: every interval into the song's file through SongWriter alone, a new
//          file at each title named as the chain names it (the recorder
//          before it knew frames or tags);
//   chain: RecordingOutput, with the frame search, the cut at whole frames
//          and (argument 1) tags written at open and completed at close.
// The two take turns going first, so that neither always meets the caches
// and the file system the other left. Reported: processor time per recorded
// MB of both, how much more the chain takes, and the process's peak resident
// memory.
#include "benchsupport.h"
#include "catalogue/stationnames.h"
#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/recordingoutput.h"
#include "recorder/songwriter.h"

#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

constexpr int MetaInterval = 16000;
constexpr qsizetype PacketSize = 4096;
constexpr int Songs = 16;
constexpr qint64 SongBytes = 3 * 1024 * 1024 / MetaInterval * MetaInterval;
constexpr qsizetype FrameSize = 417; // MPEG-1 layer III, 128 kbit/s, 44.1 kHz, no padding

// Frames of a few seconds, played round: the stream is a whole number of them.
const QByteArray &frameRing()
{
    static const QByteArray ring = [] {
        QByteArray bytes;
        quint32 seed = 12345;
        for (int frame = 0; frame < 400; ++frame) {
            bytes += QByteArray::fromHex("fffb9064");
            for (qsizetype i = 4; i < FrameSize; ++i) {
                seed = seed * 1103515245 + 12345;
                bytes += char(seed >> 24);
            }
        }
        return bytes;
    }();
    return ring;
}

// One song of the stream as it comes over the wire: its title in the block in
// front of its first interval, then empty blocks.
QByteArray songWire(int song, qint64 &audioPosition)
{
    const QByteArray &ring = frameRing();
    QByteArray wire;
    wire.reserve(SongBytes + SongBytes / MetaInterval + 64);
    for (qint64 at = 0; at < SongBytes; at += MetaInterval) {
        for (qsizetype left = MetaInterval; left > 0;) {
            const qsizetype from = audioPosition % ring.size();
            const qsizetype n = std::min(left, ring.size() - from);
            wire += QByteArrayView(ring).sliced(from, n);
            audioPosition += n;
            left -= n;
        }
        if (at + MetaInterval >= SongBytes) {
            const QByteArray text = "StreamTitle='Artist " + QByteArray::number(song) + " - Song " +
                                    QByteArray::number(song) + "';";
            const qsizetype units = (text.size() + 15) / 16;
            wire += char(units) + text.leftJustified(units * 16, '\0');
        } else {
            wire += char(0);
        }
    }
    return wire;
}

// The window's part, reduced to where the audio goes.
class Host : public IcyStreamHost
{
public:
    QString shownTitle() const override { return m_title; }
    void showTitle(const QString &title) override { m_title = title; }
    void switchToContinuous() override {}

private:
    QString m_title;
};

class PlainHost : public Host
{
public:
    explicit PlainHost(const QString &folder) : m_folder(folder) {}
    void setWriteEnabled(bool) override {}
    void WriteToDisk(QByteArrayView data, bool flush) override
    {
        m_writer.write(data);
        if (flush)
            m_writer.flush();
    }
    void NewSong(const QString &title) override
    {
        QString name = BuildFileName(QStringLiteral("./%SONG%.mp3"), {}, {}, m_folder + u'/');
        m_writer.open(name.replace(QStringLiteral("%SONG%"), StationNames::cleanShortName(title)), false);
    }
    bool isFileOpen() const override { return m_writer.isOpen(); }
    void close() { m_writer.close(); }

private:
    QString m_folder;
    SongWriter m_writer;
};

class ChainHost : public Host
{
public:
    ChainHost(const QString &folder, bool tags) : m_folder(folder)
    {
        RecordingOutput::Recording recording;
        recording.station = QStringLiteral("Bench");
        recording.address = QStringLiteral("http://127.0.0.1:8000/stream");
        recording.options.writeTags = tags;
        // Frames of random bodies: nothing a decoder could search.
        recording.options.cutAtQuietMoment = false;
        m_output.startRecording(recording);
        m_output.begin(StreamFormat::Mp3, MetaInterval);
    }
    void setWriteEnabled(bool enabled) override { m_output.setWriteEnabled(enabled); }
    void WriteToDisk(QByteArrayView data, bool flush) override { m_output.WriteToDisk(data, flush); }
    void NewSong(const QString &title) override
    {
        m_output.NewSong(title, true, BuildFileName(QStringLiteral("./%SONG%.mp3"), {}, {}, m_folder + u'/'));
    }
    bool isFileOpen() const override { return m_output.isFileOpen(); }
    void close() { m_output.CloseFile(); }

private:
    QString m_folder;
    RecordingOutput m_output;
};

// Processor seconds spent feeding the whole stream to the host's parser.
template <typename H> double record(H &host)
{
    IcyStream icy(host);
    icy.onData(
        "ICY 200 OK\r\nicy-name:Bench\r\nicy-br:128\r\nicy-metaint:16000\r\ncontent-type:audio/mpeg\r\n\r\n");
    double cpu = 0;
    qint64 audioPosition = 0;
    for (int song = 1; song <= Songs; ++song) {
        const QByteArray wire = songWire(song, audioPosition);
        const double start = processCpuSeconds();
        for (qsizetype at = 0; at < wire.size(); at += PacketSize)
            icy.onData(QByteArrayView(wire).sliced(at, std::min(PacketSize, wire.size() - at)));
        cpu += processCpuSeconds() - start;
    }
    const double start = processCpuSeconds();
    icy.flushRest();
    host.close();
    return cpu + processCpuSeconds() - start;
}

void BM_SongFiles(benchmark::State &state)
{
    const bool tags = state.range(0) != 0;
    double plain = 0;
    double chain = 0;
    bool plainFirst = true;
    for (auto _ : state) {
        QTemporaryDir plainFolder;
        QTemporaryDir chainFolder;
        const auto runPlain = [&] {
            PlainHost plainHost(plainFolder.path());
            plain += record(plainHost);
        };
        const auto runChain = [&] {
            ChainHost chainHost(chainFolder.path(), tags);
            chain += record(chainHost);
        };
        if (plainFirst) {
            runPlain();
            runChain();
        } else {
            runChain();
            runPlain();
        }
        plainFirst = !plainFirst;
        if (QDir(chainFolder.path()).entryList(QDir::Files).size() < Songs - 1)
            state.SkipWithError("the chain wrote too few song files");
    }
    const double megabytes = double(SongBytes) * Songs * double(state.iterations()) / 1e6;
    state.counters["plain_cpu_ms_per_MB"] = plain * 1000 / megabytes;
    state.counters["chain_cpu_ms_per_MB"] = chain * 1000 / megabytes;
    state.counters["chain_extra_percent"] = (chain / plain - 1) * 100;
    state.counters["peak_rss_MB"] = processMegabytes("VmHWM:");
}
// Argument 0: song files without tags; 1: with tags.
BENCHMARK(BM_SongFiles)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace

BENCHMARK_MAIN();
