// The recorder's parse-and-write path alone: a synthetic ICY stream (metadata
// every 16000 bytes, a new title every 3 MB) fed in 4 KB packets, one per
// event, through the stream parser into real files of the output stage; and
// the same stream as a flood of large reads.
#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/recordingoutput.h"
#include "recorder/streamconnection.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <ctime>

namespace {

constexpr int MetaInterval = 16000;
constexpr qsizetype PacketSize = 4096;
constexpr qsizetype StreamSize = 96 * 1024 * 1024;
constexpr qsizetype TitleEvery = 3 * 1024 * 1024;
const QString MemoryFolder = QStringLiteral("/dev/shm");

// The window's part, reduced to the output stage in single-song mode.
class OutputHost : public IcyStreamHost
{
public:
    // With an empty folder nothing is written: the parser and its buffer alone.
    explicit OutputHost(const QString &folder) : m_folder(folder)
    {
        RecordingOutput::Recording recording;
        recording.options.writeTags = false;
        output.startRecording(recording);
        output.begin(StreamFormat::Mp3, MetaInterval);
    }

    QString shownTitle() const override { return m_title; }
    void showTitle(const QString &title) override { m_title = title; }
    void setWriteEnabled(bool enabled) override { output.setWriteEnabled(enabled && !m_folder.isEmpty()); }
    void WriteToDisk(QByteArrayView data, bool flush) override { output.WriteToDisk(data, flush); }
    void NewSong(const QString &title) override
    {
        output.NewSong(title, true, BuildFileName(QStringLiteral("./%SONG%.mp3"), {}, {}, m_folder + u'/'));
    }
    bool isFileOpen() const override { return output.isFileOpen(); }
    void switchToContinuous() override
    {
        output.removeSongPlaceholder();
        output.OpenFile();
    }

    RecordingOutput output;

private:
    QString m_folder;
    QString m_title;
};

QByteArray metadataBlock(const QByteArray &text)
{
    const qsizetype units = (text.size() + 15) / 16;
    return char(units) + text.leftJustified(units * 16, '\0');
}

// Header, then intervals of pseudo-random audio, each followed by an empty
// metadata block except where a new title is due.
const QByteArray &syntheticStream()
{
    static const QByteArray stream = [] {
        QByteArray audio(MetaInterval, Qt::Uninitialized);
        quint32 seed = 12345;
        for (char &c : audio) {
            seed = seed * 1103515245 + 12345;
            c = char(seed >> 24);
        }
        QByteArray s = "ICY 200 OK\r\nicy-name:Bench\r\nicy-br:128\r\nicy-metaint:16000\r\n\r\n";
        s.reserve(StreamSize + 4096);
        qsizetype nextTitle = 0;
        int song = 0;
        while (s.size() < StreamSize) {
            s += audio;
            if (s.size() >= nextTitle) {
                s += metadataBlock("StreamTitle='Artist - Song " + QByteArray::number(++song) + "';");
                nextTitle += TitleEvery;
            } else {
                s += char(0);
            }
        }
        return s;
    }();
    return stream;
}

// Wall-clock and processor time of one run. The machine may be shared, so
// the processor time (system calls included) is the steadier figure.
struct Timing
{
    double wall = 0;
    double cpu = 0;
};

template<typename Work>
Timing timed(Work work)
{
    const auto wallStart = std::chrono::steady_clock::now();
    const std::clock_t cpuStart = std::clock();
    work();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wallStart;
    return {wall.count(), double(std::clock() - cpuStart) / CLOCKS_PER_SEC};
}

void BM_ParseAndWrite(benchmark::State &state)
{
    const QByteArray &stream = syntheticStream();
    QByteArray target(stream.size(), Qt::Uninitialized);
    Timing parse;
    Timing copy;
    qint64 compactions = 0;
    for (auto _ : state) {
        state.PauseTiming();
        QTemporaryDir folder(state.range(0) && QFileInfo(MemoryFolder).isDir()
                                 ? MemoryFolder + QStringLiteral("/tunecatch-bench-XXXXXX")
                                 : QDir::tempPath() + QStringLiteral("/tunecatch-bench-XXXXXX"));
        const Timing c = timed([&] {
            std::memcpy(target.data(), stream.constData(), size_t(stream.size()));
            benchmark::ClobberMemory();
        });
        copy.wall += c.wall;
        copy.cpu += c.cpu;
        state.ResumeTiming();
        const Timing p = timed([&] {
            OutputHost host(folder.path());
            IcyStream icy(host);
            for (qsizetype at = 0; at < stream.size(); at += PacketSize)
                icy.onData(QByteArrayView(stream).sliced(at, std::min(PacketSize, stream.size() - at)));
            icy.flushRest();
            host.output.CloseFile();
            compactions = icy.compactions();
        });
        parse.wall += p.wall;
        parse.cpu += p.cpu;
        state.PauseTiming();
        folder.remove(); // outside the measured time
        state.ResumeTiming();
    }
    const double megabytes = double(stream.size()) * double(state.iterations()) / 1e6;
    state.SetBytesProcessed(qint64(stream.size()) * state.iterations());
    state.counters["MB/s"] = megabytes / parse.wall;
    state.counters["MB/s_cpu"] = megabytes / parse.cpu;
    state.counters["memcpy_MB/s"] = megabytes / copy.wall;
    state.counters["ratio"] = copy.wall / parse.wall;
    state.counters["ratio_cpu"] = copy.cpu / parse.cpu;
    state.counters["compactions"] = double(compactions);
}
// Argument 0: real files in a temporary folder; 1: files in memory (tmpfs),
// which leaves the parser, the output chain and the cache without the disk's share.
BENCHMARK(BM_ParseAndWrite)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(2.0);

// One metadata step with a backlog just below BacklogLimit in the buffer: its
// cost must not grow with the backlog (no step copies the whole receive buffer).
void BM_StepWithBacklog(benchmark::State &state)
{
    const QByteArray &stream = syntheticStream();
    OutputHost host({});
    IcyStream icy(host);
    const QByteArrayView header = QByteArrayView(stream).first(stream.indexOf("\r\n\r\n") + 4);
    for (auto _ : state) {
        if (icy.receiveBufferLength() < MetaInterval + 4096) {
            state.PauseTiming();
            icy.reset();
            icy.onData(header);
            icy.onData(QByteArrayView(stream).sliced(header.size(), IcyStream::BacklogLimit));
            state.ResumeTiming();
        }
        icy.onData({});
    }
    state.SetBytesProcessed(qint64(MetaInterval) * state.iterations());
}
BENCHMARK(BM_StepWithBacklog)->Unit(benchmark::kMicrosecond);

// A flood: 50 MB arriving in reads as large as the socket allows, one event
// each. Beyond BacklogLimit an event works the backlog off, so the buffer
// peaks a little above it whatever the sender does.
void BM_Flood(benchmark::State &state)
{
    const QByteArray &stream = syntheticStream();
    const qsizetype headerSize = stream.indexOf("\r\n\r\n") + 4;
    const QByteArrayView flood = QByteArrayView(stream).first(headerSize + 50 * 1024 * 1024);
    double peak = 0;
    for (auto _ : state) {
        OutputHost host({});
        IcyStream icy(host);
        for (qsizetype at = 0; at < flood.size(); at += StreamConnection::ReadAhead)
            icy.onData(flood.sliced(at, std::min<qsizetype>(StreamConnection::ReadAhead, flood.size() - at)));
        peak = icy.peakBuffer();
    }
    state.SetBytesProcessed(flood.size() * state.iterations());
    state.counters["peak_buffer_kb"] = peak / 1024;
}
BENCHMARK(BM_Flood)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
