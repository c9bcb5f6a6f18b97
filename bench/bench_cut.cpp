// Where songs are cut, on a generated MP3 stream (128 kbit/s) of 30-second
// songs with 0.8 s of silence between them. Titles come 0, 2 or 5 s late or
// 2 s early, and only with a metadata block (every 16000 bytes), so up to one
// interval later still. The station's delay is learnt as the stream goes.
//
// A cut's error is its distance from the ideal cut: the lead-in (0.2 s)
// before the next song's first note. Targets with titles 2 s late: median at
// most 0.05 s, worst at most 0.6 s. Cutting at the title instead is shown as
// "title_rule_median_s".
//
// The CPU a recorded MB costs with the search and without it (the planner
// only passing bytes and cutting at titles), for 30-second songs and for
// 3-minute ones: decoding runs only inside the windows.
#include "recorder/cutplanner.h"
#include "recorder/titledelay.h"

#include "benchsupport.h"
#include "support/tempprofile.h"
#include "support/testaudio.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace TestAudio;

namespace {

constexpr qint64 MetaInterval = 16000;

const SongPlan &plan(int songLength)
{
    static const SongPlan shortSongs{std::vector<double>(11, 0.8), 30};
    static const SongPlan longSongs{std::vector<double>(3, 0.8), 180};
    return songLength == 30 ? shortSongs : longSongs;
}

const EncodedSound &stream(int songLength)
{
    static const EncodedSound &shortSongs = encodeSound(plan(30), plan(30).total(), {});
    static const EncodedSound &longSongs = encodeSound(plan(180), plan(180).total(), {});
    return songLength == 30 ? shortSongs : longSongs;
}

// Song i's title, `late` seconds after it begins, with the next metadata block.
std::vector<std::pair<qint64, QString>> titles(int songLength, double late)
{
    const SongPlan &songs = plan(songLength);
    const EncodedSound &audio = stream(songLength);
    std::vector<std::pair<qint64, QString>> out;
    for (int i = 1; i < songs.songs(); ++i) {
        const qint64 at = audio.offsetAt(songs.start(i) + late);
        out.emplace_back((at + MetaInterval - 1) / MetaInterval * MetaInterval,
                         QStringLiteral("Song %1").arg(i));
    }
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
    const auto sent = titles(30, late);
    std::vector<double> errors, titleErrors;
    int inGap = 0;
    for (auto _ : state) {
        // Learnt afresh on each run: the delay kept from the last one is forgotten.
        TitleDelay delay(QStringLiteral("Bench FM"));
        delay.reset();
        CutPlanner planner(StreamFormat::Mp3, &delay);
        const PlannedSongs planned = runPlanner(planner, stream(30), sent);
        errors.clear();
        titleErrors.clear();
        inGap = 0;
        for (size_t i = 0; i < planned.cuts.size(); ++i) {
            const int song = static_cast<int>(i) + 1;
            const SongCut &cut = planned.cuts[i];
            errors.push_back(std::abs(cut.cutTime - (songs.start(song) - QuietRules().leadIn)));
            titleErrors.push_back(std::abs(cut.titleTime - songs.start(song)));
            inGap += cut.cutTime >= songs.end(song - 1) && cut.cutTime <= songs.start(song);
        }
        state.counters["delay_learnt_s"] = delay.seconds();
    }
    state.counters["cuts"] = static_cast<double>(errors.size());
    state.counters["in_gap"] = inGap;
    state.counters["median_s"] = median(errors);
    state.counters["worst_s"] = errors.empty() ? 0 : *std::max_element(errors.begin(), errors.end());
    state.counters["title_rule_median_s"] = median(titleErrors);
}
// Tenths of a second late.
BENCHMARK(BM_CutAccuracy)->Arg(0)->Arg(20)->Arg(50)->Arg(-20)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_CutCpu(benchmark::State &state)
{
    const int songLength = static_cast<int>(state.range(0));
    const bool search = state.range(1) != 0;
    const EncodedSound &audio = stream(songLength);
    const auto sent = titles(songLength, 2);
    double cpu = 0;
    qsizetype peak = 0;
    for (auto _ : state) {
        CutPlanner planner(search ? std::optional(StreamFormat::Mp3) : std::nullopt);
        const double before = processCpuSeconds();
        const PlannedSongs planned = runPlanner(planner, audio, sent);
        cpu += processCpuSeconds() - before;
        peak = std::max(peak, planned.peakHeld);
        benchmark::DoNotOptimize(planned.bytes.size());
    }
    const double megabytes =
        static_cast<double>(audio.bytes.size()) * static_cast<double>(state.iterations()) / 1e6;
    state.SetBytesProcessed(audio.bytes.size() * state.iterations());
    state.counters["cpu_ms_per_MB"] = cpu * 1000 / megabytes;
    state.counters["peak_held_KB"] = static_cast<double>(peak) / 1024;
}
// Song length in seconds; search off (0) or on (1).
BENCHMARK(BM_CutCpu)->ArgsProduct({{30, 180}, {0, 1}})->Unit(benchmark::kMillisecond)->MinTime(1.0);

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
    std::printf("Peak memory: %.1f MB\n", processMegabytes("VmHWM:"));
    return 0;
}
