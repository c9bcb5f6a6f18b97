// The History window's waits on a full history of 100,000 titles: reading the
// file at start-up, opening the window on the history in memory, and a search
// as the user types. Targets: 300 ms to open, 100 ms per search.
#include "benchsupport.h"

#include "history/historystore.h"
#include "ui/history/frmhistory.h"

#include "app/desktopshell.h"

#include <QApplication>
#include <QLineEdit>
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

void BM_HistoryRead(benchmark::State &state)
{
    for (auto _ : state) {
        HistoryStore store(historyPath);
        if (!store.open().isEmpty() || store.size() != HistoryStore::DefaultLimit)
            state.SkipWithError("the history did not load whole");
    }
    state.counters["peak_MB"] = processMegabytes("VmHWM:");
}
BENCHMARK(BM_HistoryRead)->Unit(benchmark::kMillisecond);

// From the click to the window drawn: the store is in memory since start-up.
void BM_HistoryWindowOpen(benchmark::State &state)
{
    HistoryStore store(historyPath);
    store.open();
    DesktopShell shell;
    QuietPrompt prompt;
    for (auto _ : state) {
        FrmHistory window(store, shell, prompt);
        window.show();
        QCoreApplication::processEvents();
        benchmark::DoNotOptimize(window.grab());
    }
}
BENCHMARK(BM_HistoryWindowOpen)->Unit(benchmark::kMillisecond);

// Each step narrows or widens the rows shown, as typing and erasing do, and
// the table is drawn again.
void BM_HistorySearch(benchmark::State &state)
{
    HistoryStore store(historyPath);
    store.open();
    DesktopShell shell;
    QuietPrompt prompt;
    FrmHistory window(store, shell, prompt);
    window.show();
    QCoreApplication::processEvents();
    auto *search = window.findChild<QLineEdit *>(QStringLiteral("txtSearch"));
    const QString texts[] = {QStringLiteral("a"), QStringLiteral("artist 97"), QStringLiteral("number 4242"),
                             QStringLiteral("station number 5"), QString()};
    qsizetype step = 0;
    for (auto _ : state) {
        search->setText(texts[step++ % std::size(texts)]);
        QCoreApplication::processEvents();
        benchmark::DoNotOptimize(window.grab());
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
    std::printf("Peak memory: %.1f MB\n", processMegabytes("VmHWM:"));
    return 0;
}
