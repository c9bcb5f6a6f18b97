#include "benchsupport.h"

#include "catalogue/catalogue.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>


#include <cstdio>

namespace {

constexpr int stationTotal = 100000;

// A station of typical size: about 170 characters on its line.
Station sampleStation(int i)
{
    static const QString genres[] = {QStringLiteral("Jazz"), QStringLiteral("Rock"),
                                     QStringLiteral("Classical"), QStringLiteral("Talk"),
                                     QStringLiteral("Electronic")};
    const QString n = QString::number(i);
    Station s = Station::newStation();
    s.Name = QStringLiteral("Station number ") + n;
    s.Genre = genres[i % 5];
    s.BitRate = QStringLiteral("128");
    s.Category = i % 7 == 0 ? QStringLiteral("Favourites") : QString();
    s.Rating = i % 11 - 5;
    s.CallSign = n;
    s.StreamURL = QStringLiteral("http://stream") + n + QStringLiteral(".example.net:8000/live");
    s.InfoUrl = QStringLiteral("http://www.station") + n + QStringLiteral(".example.net/");
    return s;
}

void fill(Catalogue &catalogue, int count)
{
    for (int i = 1; i <= count; ++i)
        catalogue.append(sampleStation(i));
}

void reportPeak(benchmark::State &state)
{
    state.counters["peak_MB"] = processMegabytes("VmHWM:");
}

void BM_CatalogueSave(benchmark::State &state)
{
    Catalogue catalogue;
    fill(catalogue, stationTotal);
    for (auto _ : state)
        catalogue.save();
    reportPeak(state);
}
BENCHMARK(BM_CatalogueSave)->Unit(benchmark::kMillisecond);

void BM_CatalogueLoad(benchmark::State &state)
{
    {
        Catalogue source;
        fill(source, stationTotal);
        source.save();
    }
    Catalogue catalogue;
    QuietPrompt prompt;
    for (auto _ : state)
        catalogue.load(prompt, QStringLiteral("Tunecatch"));
    if (catalogue.stationCount() != stationTotal || prompt.messages != 0)
        state.SkipWithError("the generated catalogue did not load whole");
    reportPeak(state);
}
BENCHMARK(BM_CatalogueLoad)->Unit(benchmark::kMillisecond);

// Time per append stays flat from a thousand to a hundred thousand stations:
// the array grows geometrically and is never copied whole per station.
void BM_CatalogueAppend(benchmark::State &state)
{
    const int count = static_cast<int>(state.range(0));
    const Station station = sampleStation(1);
    for (auto _ : state) {
        Catalogue catalogue;
        for (int i = 0; i < count; ++i)
            catalogue.append(station);
        benchmark::DoNotOptimize(catalogue.stationCount());
    }
    state.counters["per_append"] = benchmark::Counter(count, benchmark::Counter::kIsIterationInvariantRate |
                                                                 benchmark::Counter::kInvert);
}
BENCHMARK(BM_CatalogueAppend)->Arg(1000)->Arg(10000)->Arg(stationTotal)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QCoreApplication app(argc, argv);

    // The catalogue lives in the data folder, which APPDATA points at.
    const QTemporaryDir appData;
    qputenv("APPDATA", QFile::encodeName(appData.path()));
    QDir().mkpath(appData.path() + QStringLiteral("/Tunecatch"));

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("Peak memory: %.1f MB\n", processMegabytes("VmHWM:"));
    return 0;
}
