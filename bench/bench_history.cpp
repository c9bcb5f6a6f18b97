// The History window's two waits on a full history of 100,000 titles: opening
// it (the file read, the model and a table view shown) and a search as the
// user types. Targets: 300 ms to open, 100 ms per search.
#include "benchsupport.h"

#include "history/historyfilter.h"
#include "history/historymodel.h"
#include "history/historystore.h"

#include <QApplication>
#include <QTableView>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

QString historyPath;

// A hundred stations, titles of typical length, one every four minutes.
void writeFullHistory()
{
    std::deque<HistoryEntry> entries;
    const qint64 start = 1700000000000;
    for (int i = 0; i < HistoryStore::DefaultLimit; ++i) {
        entries.push_back({start + i * 240000LL, QStringLiteral("Station number %1").arg(i % 100),
                           QStringLiteral("Artist %1 - A song called number %2").arg(i % 977).arg(i)});
    }
    if (!HistoryFile::write(historyPath, entries).isEmpty())
        std::fprintf(stderr, "the history file could not be written\n");
}

void BM_HistoryWindowOpen(benchmark::State &state)
{
    for (auto _ : state) {
        HistoryStore store(historyPath);
        if (!store.open().isEmpty() || store.size() != HistoryStore::DefaultLimit)
            state.SkipWithError("the history did not load whole");
        HistoryModel model(store);
        HistoryFilter filter(model);
        QTableView view;
        view.setModel(&filter);
        view.setSortingEnabled(true);
        view.sortByColumn(HistoryModel::TimeColumn, Qt::DescendingOrder);
        view.resize(800, 600);
        view.show();
        QCoreApplication::processEvents();
    }
    state.counters["peak_MB"] = ProcessMegabytes("VmHWM:");
}
BENCHMARK(BM_HistoryWindowOpen)->Unit(benchmark::kMillisecond);

// Each step narrows or widens the rows shown, as typing and erasing do.
void BM_HistorySearch(benchmark::State &state)
{
    HistoryStore store(historyPath);
    store.open();
    HistoryModel model(store);
    HistoryFilter filter(model);
    filter.sort(HistoryModel::TimeColumn, Qt::DescendingOrder);
    const QString texts[] = {QStringLiteral("a"), QStringLiteral("artist 97"), QStringLiteral("number 4242"),
                             QStringLiteral("station number 5"), QString()};
    qsizetype step = 0;
    for (auto _ : state) {
        filter.setText(texts[step++ % std::size(texts)]);
        benchmark::DoNotOptimize(filter.rowCount());
    }
}
BENCHMARK(BM_HistorySearch)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QApplication app(argc, argv);
    const QTemporaryDir folder;
    historyPath = HistoryStore::pathIn(folder.path() + QLatin1Char('/'));
    writeFullHistory();

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::printf("Peak memory: %.1f MB\n", ProcessMegabytes("VmHWM:"));
    return 0;
}
