// Where songs are cut, on a generated MP3 stream (128 kbit/s) of 30-second
// songs with 0.8 s of silence between them, recorded as the recorder's song
// output does: the stream in metadata intervals (16000 bytes) through the
// song cutter into whole-frame song files on disk. Titles come 0, 2 or 5 s
// late or 2 s early, and only with a metadata block, so up to one interval
// later still. The station's delay is learnt as the stream goes.
//
// A cut's error is its distance from the ideal cut: the lead-in (0.2 s)
// before the next song's first note. Targets with titles 2 s late: median at
// most 0.05 s, worst at most 0.6 s. Cutting at the title instead (today's
// rule, the interval before the title's block) is shown as
// "title_rule_median_s".
//
// The CPU a recorded MB costs: the song files alone (no cutter), the cutter
// with the search off, and with it on, for 30-second songs and 3-minute ones
// (decoding runs only inside the windows), and the audio held back at most.
// The same through the recorder itself: the stream as it comes over the
// wire (metadata blocks in it) through the stream parser into RecordingOutput,
// with the cut at the quiet moment on and off.
// The process's peak memory, which holds the test streams as well, bounds
// what one recording needs (target: under 40 MB).
#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/recordingoutput.h"
#include "recorder/songcutter.h"
#include "recorder/songframes.h"
#include "recorder/titledelay.h"

#include "benchsupport.h"
#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>

using namespace TestAudio;

namespace {

constexpr qint64 MetaInterval = 16000;

const SongPlan &plan(int songLength)
{
    static const SongPlan shortSongs{std::vector<double>(11, 0.8), 30};
    static const SongPlan longSongs{std::vector<double>(3, 0.8), 180};
    return songLength == 30 ? shortSongs : longSongs;
}

// Made once: each call of encodeSound computes the samples again.
const EncodedSound &stream(int songLength)
{
    static const EncodedSound &shortSongs = encodeSound(plan(30), plan(30).total(), {});
    static const EncodedSound &longSongs = encodeSound(plan(180), plan(180).total(), {});
    return songLength == 30 ? shortSongs : longSongs;
}

// The end of the interval whose metadata block carries song i's title, sent
// `late` seconds after the song begins.
QList<qint64> titles(int songLength, double late)
{
    const SongPlan &songs = plan(songLength);
    QList<qint64> out;
    for (int i = 1; i < songs.songs(); ++i) {
        const qint64 at = stream(songLength).offsetAt(songs.start(i) + late);
        out.append((at + MetaInterval - 1) / MetaInterval * MetaInterval);
    }
    return out;
}

enum class Output
{
    FilesOnly,
    SearchOff,
    SearchOn,
};

struct Recording
{
    std::vector<SongCut> cuts;
    qint64 ruleCuts = 0; // without a cutter, the files made
    qsizetype peakHeld = 0;
};

// One recording of one file per song into `folder`.
Recording record(const EncodedSound &audio, const QList<qint64> &titleEnds, Output how, const QString &folder)
{
    Recording out;
    SongFrames frames(StreamFormat::Mp3, MetaInterval);
    std::optional<SongCutter> cutter;
    if (how != Output::FilesOnly) {
        cutter.emplace(StreamFormat::Mp3, QStringLiteral("Bench FM"), how == Output::SearchOn);
        cutter->delay().reset();
    }
    QFile file;
    int files = 0;
    const auto newSong = [&](qint64 from) {
        const SongFrames::Cut cut = frames.cut(from);
        if (file.isOpen())
            file.write(cut.tail);
        file.close();
        file.setFileName(QStringLiteral("%1/%2.mp3").arg(folder).arg(files++));
        if (!file.open(QIODevice::WriteOnly))
            std::abort();
        file.write(cut.head);
    };
    const auto collect = [&] {
        for (const SongCutter::Output &piece : cutter->takeOutput()) {
            if (const auto *bytes = std::get_if<QByteArray>(&piece)) {
                file.write(frames.push(*bytes));
            } else {
                out.cuts.push_back(std::get<SongCut>(piece));
                newSong(out.cuts.back().offset);
            }
        }
    };
    newSong(0);
    const QByteArrayView bytes(audio.bytes);
    for (qint64 at = 0; at < bytes.size(); at += MetaInterval) {
        const QByteArrayView chunk = bytes.sliced(at, std::min(MetaInterval, bytes.size() - at));
        if (cutter)
            cutter->push(chunk);
        else
            file.write(frames.push(chunk));
        if (titleEnds.contains(at + chunk.size())) {
            if (cutter)
                cutter->changeTitle(QStringLiteral("Song %1").arg(titleEnds.indexOf(at + chunk.size()) + 1));
            else
                newSong(at);
        }
        if (cutter)
            collect();
    }
    if (cutter) {
        cutter->finish();
        collect();
        out.peakHeld = cutter->peakBytesHeld();
    }
    file.write(frames.finish());
    out.ruleCuts = files - 1;
    return out;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

void BM_CutAccuracy(benchmark::State &state)
{
    const double late = static_cast<double>(state.range(0)) / 10;
    const SongPlan &songs = plan(30);
    const QList<qint64> sent = titles(30, late);
    std::vector<double> errors, ruleErrors;
    int inGap = 0;
    double delay = 0;
    for (auto _ : state) {
        const QTemporaryDir folder;
        const Recording recording = record(stream(30), sent, Output::SearchOn, folder.path());
        errors.clear();
        ruleErrors.clear();
        inGap = 0;
        for (size_t i = 0; i < recording.cuts.size(); ++i) {
            const int song = static_cast<int>(i) + 1;
            const SongCut &cut = recording.cuts[i];
            errors.push_back(std::abs(cut.cutTime - (songs.start(song) - QuietRules().leadIn)));
            // Today's rule starts the song with the interval before the title's block.
            const double ruleTime = cut.titleTime - MetaInterval * 8.0 / 128000;
            ruleErrors.push_back(std::abs(ruleTime - (songs.start(song) - QuietRules().leadIn)));
            inGap += cut.cutTime >= songs.end(song - 1) && cut.cutTime <= songs.start(song);
        }
        delay = TitleDelay(QStringLiteral("Bench FM")).seconds();
    }
    state.counters["cuts"] = static_cast<double>(errors.size());
    state.counters["in_gap"] = inGap;
    state.counters["delay_learnt_s"] = delay;
    state.counters["median_s"] = median(errors);
    state.counters["worst_s"] = errors.empty() ? 0 : *std::max_element(errors.begin(), errors.end());
    state.counters["title_rule_median_s"] = median(ruleErrors);
}
// Tenths of a second late.
BENCHMARK(BM_CutAccuracy)->Arg(0)->Arg(20)->Arg(50)->Arg(-20)->Iterations(1)->Unit(benchmark::kMillisecond);

// CPU per MB by song length and output, for the ratio printed at the end.
std::map<std::pair<int, int>, double> cpuPerMb;
// The same through the recorder, by whether the quiet search is on.
std::map<bool, double> recorderCpuPerMb;

void BM_CutCpu(benchmark::State &state)
{
    const int songLength = static_cast<int>(state.range(0));
    const auto how = static_cast<Output>(state.range(1));
    const EncodedSound &audio = stream(songLength);
    const QList<qint64> sent = titles(songLength, 2);
    double cpu = 0;
    Recording last;
    for (auto _ : state) {
        const QTemporaryDir folder;
        const double before = processCpuSeconds();
        last = record(audio, sent, how, folder.path());
        cpu += processCpuSeconds() - before;
    }
    const double megabytes =
        static_cast<double>(audio.bytes.size()) * static_cast<double>(state.iterations()) / 1e6;
    state.SetBytesProcessed(audio.bytes.size() * state.iterations());
    state.counters["songs"] = static_cast<double>(std::max<qint64>(last.ruleCuts, 0) + 1);
    state.counters["cpu_ms_per_MB"] = cpu * 1000 / megabytes;
    state.counters["peak_held_KB"] = static_cast<double>(last.peakHeld) / 1024;
    cpuPerMb[{songLength, static_cast<int>(how)}] = cpu / megabytes;
}
// Song length in seconds; song files alone (0), search off (1), on (2).
BENCHMARK(BM_CutCpu)->ArgsProduct({{30, 180}, {0, 1, 2}})->Unit(benchmark::kMillisecond)->MinTime(1.0);

// The stream as the station sends it: every interval followed by its
// metadata block, which names the next song where `titleEnds` says.
QByteArray wire(const EncodedSound &audio, const QList<qint64> &titleEnds)
{
    QByteArray out;
    const QByteArrayView bytes(audio.bytes);
    QByteArray title = "StreamTitle='Song 0';";
    for (qint64 at = 0; at + MetaInterval <= bytes.size(); at += MetaInterval) {
        out += bytes.sliced(at, MetaInterval);
        if (const qsizetype song = titleEnds.indexOf(at + MetaInterval); song >= 0 || at == 0) {
            if (song >= 0)
                title = "StreamTitle='Song " + QByteArray::number(song + 1) + "';";
            const qsizetype units = (title.size() + 15) / 16;
            out += char(units) + title.leftJustified(units * 16, '\0');
        } else {
            out += char(0);
        }
    }
    return out;
}

// The recorder window's part, reduced to where the audio goes.
class RecorderHost : public IcyStreamHost
{
public:
    RecorderHost(const QString &folder, bool quietCut) : m_folder(folder)
    {
        RecordingOutput::Recording recording;
        recording.station = QStringLiteral("Bench FM recorder");
        recording.address = QStringLiteral("http://127.0.0.1:8000/stream");
        recording.options.cutAtQuietMoment = quietCut;
        m_output.startRecording(recording);
        m_output.begin(StreamFormat::Mp3, MetaInterval);
    }
    QString shownTitle() const override { return m_title; }
    void showTitle(const QString &title) override { m_title = title; }
    void switchToContinuous() override {}
    void setWriteEnabled(bool enabled) override { m_output.setWriteEnabled(enabled); }
    void WriteToDisk(QByteArrayView data, bool flush) override { m_output.WriteToDisk(data, flush); }
    void NewSong(const QString &title) override
    {
        m_output.NewSong(title, true, BuildFileName(QStringLiteral("./%SONG%.mp3"), {}, {}, m_folder + u'/'));
    }
    bool isFileOpen() const override { return m_output.isFileOpen(); }
    void close() { m_output.CloseFile(); }
    const RecordingOutput &output() const { return m_output; }

private:
    QString m_folder;
    QString m_title;
    RecordingOutput m_output;
};

void BM_RecorderCpu(benchmark::State &state)
{
    const bool quietCut = state.range(0) != 0;
    const EncodedSound &audio = stream(30);
    const QByteArray sent = wire(audio, titles(30, 2));
    double cpu = 0;
    qsizetype peakHeld = 0;
    for (auto _ : state) {
        const QTemporaryDir folder;
        RecorderHost host(folder.path(), quietCut);
        TitleDelay(QStringLiteral("Bench FM recorder")).reset();
        const double before = processCpuSeconds();
        IcyStream icy(host);
        icy.onData("ICY 200 OK\r\nicy-name:Bench\r\nicy-br:128\r\nicy-metaint:16000\r\n"
                   "content-type:audio/mpeg\r\n\r\n");
        for (qsizetype at = 0; at < sent.size(); at += 4096)
            icy.onData(QByteArrayView(sent).sliced(at, std::min<qsizetype>(4096, sent.size() - at)));
        icy.flushRest();
        host.close();
        cpu += processCpuSeconds() - before;
        peakHeld = host.output().peakCutBytesHeld();
        if (QDir(folder.path()).entryList(QDir::Files).size() != static_cast<qsizetype>(plan(30).songs()))
            state.SkipWithError("the recorder wrote a song file too few or too many");
    }
    const double megabytes = static_cast<double>(sent.size()) * static_cast<double>(state.iterations()) / 1e6;
    state.counters["cpu_ms_per_MB"] = cpu * 1000 / megabytes;
    state.counters["peak_held_KB"] = static_cast<double>(peakHeld) / 1024;
    recorderCpuPerMb[quietCut] = cpu / megabytes;
}
// The cut at the quiet moment off (0) and on (1).
BENCHMARK(BM_RecorderCpu)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(1.0);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QCoreApplication app(argc, argv);
    // The delays learnt go to a profile of the benchmark's own.
    const TempProfile profile;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    for (int songLength : {30, 180}) {
        const auto files = cpuPerMb.find({songLength, static_cast<int>(Output::FilesOnly)});
        const auto search = cpuPerMb.find({songLength, static_cast<int>(Output::SearchOn)});
        if (files != cpuPerMb.end() && search != cpuPerMb.end() && files->second > 0)
            std::printf("CPU with the search, %d-second songs: %.2f times the song files alone\n", songLength,
                        search->second / files->second);
    }
    if (recorderCpuPerMb.contains(false) && recorderCpuPerMb.contains(true) && recorderCpuPerMb[false] > 0)
        std::printf("CPU of the recorder with the quiet search: %.2f times without it\n",
                    recorderCpuPerMb[true] / recorderCpuPerMb[false]);
    std::printf("Peak memory of the process (the test streams included): %.1f MB\n",
                processMegabytes("VmHWM:"));
    return 0;
}
