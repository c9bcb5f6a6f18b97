// The station directory: reading a search answer of 10,000 stations, the
// directory window showing them and the memory it takes beside the main
// window, and adding 1,000 stations to a catalogue of 100,000.
#include "benchsupport.h"

#include "app/desktopshell.h"
#include "app/keystate.h"
#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "base/settingsstore.h"
#include "catalogue/catalogue.h"
#include "catalogue/stationexchange.h"
#include "directory/directorystation.h"
#include "support/directoryserver.h"
#include "support/eventwait.h"
#include "ui/directory/frmdirectory.h"
#include "ui/player/qtmediaplayer.h"
#include "ui/stations/frmstations.h"

#include <QApplication>
#include <QFile>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

#ifdef __GLIBC__
#include <malloc.h>
#endif

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

// Resident memory with what was freed handed back, so that it is what is held.
double heldMegabytes()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    return processMegabytes("VmRSS:");
}

// The main window over an empty catalogue, and a directory on 127.0.0.1 that
// holds 10,000 stations. The directory window is opened from the main window
// by the first benchmark that needs it.
struct Windows
{
    Windows() : state(QStringLiteral("."), prompt)
    {
        server.stations = DirectoryServer::sampleStations(resultTotal);
        server.start();
        SettingsStore::saveSetting(SettingsStore::DirectoryServer, server.base());
        window = std::make_unique<FrmStations>(stationWindowParts(state),
                                               StationCommands::Services{prompt, shell, keys, {}},
                                               QtMediaPlayer::create);
        window->show();
        QCoreApplication::processEvents();
    }

    // True when the directory window lists every station and no search is under way.
    bool openDirectory()
    {
        if (!directory) {
            window->findChild<QPushButton *>(QStringLiteral("cmdDirectory"))->click();
            directory = window->findChild<FrmDirectory *>();
            if (!directory)
                return false;
            directory->setPaging(resultTotal, resultTotal);
            list = directory->findChild<QTableView *>(QStringLiteral("lstResults"));
            spinner = directory->findChild<QProgressBar *>(QStringLiteral("spinner"));
            directory->searchNow();
        }
        return waitForResults();
    }

    bool waitForResults()
    {
        const bool shown = waitUntil(
            [this] { return !spinner->isVisible() && directory->results().rowCount() == resultTotal; },
            30000);
        showNow();
        return shown;
    }

    void showNow()
    {
        QCoreApplication::processEvents();
        list->viewport()->repaint();
    }

    DirectoryServer server;
    QuietPrompt prompt;
    ProgramParts state;
    DesktopShell shell;
    KeyState keys;
    std::unique_ptr<FrmStations> window;
    FrmDirectory *directory = nullptr;
    QTableView *list = nullptr;
    QProgressBar *spinner = nullptr;
};

// Made on first use; gone before the application.
std::unique_ptr<Windows> sharedWindows;

Windows &windows()
{
    if (!sharedWindows)
        sharedWindows = std::make_unique<Windows>();
    return *sharedWindows;
}

// The directory window with 10,000 results, beside the main window alone.
void BM_DirectoryWindowMemory(benchmark::State &state)
{
    Windows &w = windows();
    const double mainWindowOnly = heldMegabytes();
    for (auto _ : state) {
        if (!w.openDirectory())
            state.SkipWithError("the directory window did not list the stations");
    }
    state.counters["rows"] = w.directory->results().rowCount();
    state.counters["directory_MB"] = heldMegabytes() - mainWindowOnly;
    reportPeak(state);
}
BENCHMARK(BM_DirectoryWindowMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

// From the whole answer of 10,000 stations to the painted list: reading it,
// the list taking it in place of the last search's, laying out and painting.
void BM_DirectoryShowAnswer(benchmark::State &state)
{
    Windows &w = windows();
    if (!w.openDirectory()) {
        state.SkipWithError("the directory window did not list the stations");
        return;
    }
    const QByteArray answer = DirectoryServer::stationsJson(w.server.stations);
    DirectoryQuery query;
    query.limit = resultTotal;
    for (auto _ : state) {
        const auto parsed = DirectoryJson::stations(answer, resultTotal);
        // As the client tells it once the answer is in.
        emit w.directory->client().searchFinished(query, parsed.values);
        w.showNow();
    }
    state.counters["rows"] = w.directory->results().rowCount();
}
BENCHMARK(BM_DirectoryShowAnswer)->Unit(benchmark::kMillisecond);

// The same search from asking to the painted list: the answer, made in
// advance, crosses the loopback, so this adds the transfer to the above.
void BM_DirectorySearchRoundTrip(benchmark::State &state)
{
    Windows &w = windows();
    if (!w.openDirectory()) {
        state.SkipWithError("the directory window did not list the stations");
        return;
    }
    w.server.body = DirectoryServer::stationsJson(w.server.stations);
    for (auto _ : state) {
        w.directory->searchNow();
        if (!w.waitForResults())
            state.SkipWithError("the stations were not listed");
    }
    w.server.body.clear();
    state.counters["rows"] = w.directory->results().rowCount();
}
BENCHMARK(BM_DirectorySearchRoundTrip)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    // The settings, the catalogue and the icon cache of a user of its own.
    QTemporaryDir home;
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
        qputenv(variable, QFile::encodeName(home.path()));
    QApplication app(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    sharedWindows.reset();
    std::printf("Peak memory: %.1f MB\n", processMegabytes("VmHWM:"));
    return 0;
}
