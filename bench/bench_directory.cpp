#include "benchsupport.h"

#include "catalogue/catalogue.h"
#include "catalogue/stationexchange.h"
#include "directory/directorystation.h"
#include "support/directoryserver.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

constexpr int resultTotal = 10000;
constexpr int catalogueTotal = 100000;
constexpr int addedCount = 1000;

void reportPeak(benchmark::State &state)
{
    state.counters["peak_MB"] = processMegabytes("VmHWM:");
}

// A search answer of 10,000 stations as the directory sends them (about
// 1 KB each, every documented field present) read into result records.
void BM_DirectoryParseResults(benchmark::State &state)
{
    const QByteArray json = DirectoryServer::stationsJson(DirectoryServer::sampleStations(resultTotal));
    for (auto _ : state) {
        const auto parsed = DirectoryJson::stations(json, resultTotal);
        if (parsed.values.size() != resultTotal)
            state.SkipWithError("the answer did not read whole");
        benchmark::DoNotOptimize(parsed.values.constData());
    }
    state.SetBytesProcessed(state.iterations() * json.size());
    state.counters["answer_MB"] = double(json.size()) / (1024 * 1024);
    reportPeak(state);
}
BENCHMARK(BM_DirectoryParseResults)->Unit(benchmark::kMillisecond);

// 1,000 directory results added to a catalogue of 100,000 stations: mapped,
// made safe, checked against every stream address, appended.
void BM_DirectoryAddToLargeCatalogue(benchmark::State &state)
{
    Catalogue full;
    for (int i = 1; i <= catalogueTotal; ++i) {
        Station s = Station::newStation();
        s.Name = QStringLiteral("Station number ") + QString::number(i);
        s.StreamURL =
            QStringLiteral("http://stream") + QString::number(i) + QStringLiteral(".example.net:8000/live");
        full.append(std::move(s));
    }
    const auto parsed = DirectoryJson::stations(
        DirectoryServer::stationsJson(DirectoryServer::sampleStations(addedCount)), addedCount);
    for (auto _ : state) {
        state.PauseTiming();
        Catalogue catalogue = full;
        state.ResumeTiming();
        QList<Station> stations;
        stations.reserve(parsed.values.size());
        for (const DirectoryStation &result : parsed.values)
            stations.append(toCatalogueStation(result));
        const auto result = StationExchange::addNew(catalogue, stations);
        if (result.added.size() != addedCount)
            state.SkipWithError("not every station was added");
    }
    reportPeak(state);
}
BENCHMARK(BM_DirectoryAddToLargeCatalogue)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QCoreApplication app(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("Peak memory: %.1f MB\n", processMegabytes("VmHWM:"));
    return 0;
}
