// The main window's player against an icecast station on 127.0.0.1: how soon
// Play turns into Playing, what one playing station costs the processor, and
// how much memory a playing main window adds to the process.
#include "benchsupport.h"

#include "base/apppaths.h"
#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "app/startup.h"
#include "base/appinfo.h"
#include "app/desktopshell.h"
#include "app/keystate.h"
#include "controls/lynxgrid.h"
#include "controls/picturebutton.h"
#include "support/eventwait.h"
#include "support/icecaststation.h"
#include "support/tempprofile.h"
#include "ui/stations/frmstations.h"
#include "ui/player/qtmediaplayer.h"
#include "player/stationplayer.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

namespace {

constexpr int PlayTimeout = 20000;
constexpr int CpuWindowMs = 5000;

IcecastStation *station = nullptr;
double baselineMegabytes = 0;

// The program's main window over a catalogue of the one loopback station,
// with the real player and the warm-up clip from the build's installation folder.
struct PlayingWindow
{
    PlayingWindow() : state(QCoreApplication::applicationDirPath() + QStringLiteral("/../bin"), prompt)
    {
        TempProfile::writeFile(AppPaths::dataFolder() + Startup::catalogueFileName,
                               TempProfile::utf16File(QStringLiteral("2.1\r\n|\r\n# versions\r\n# format\r\n"
                                                                     "Loopback|Speech|128|mp3||o|True|3|||") +
                                                      station->url() + QStringLiteral("|i\r\n")));
        state.catalogue.load(prompt, AppInfo::title);
        window = std::make_unique<FrmStations>(stationWindowParts(state),
                                               StationCommands::Services{prompt, shell, keys, {}}, QtMediaPlayer::create);
        window->show();
        QCoreApplication::processEvents();
        window->findChild<LynxGrid *>(QStringLiteral("LynxGrid1"))->setRow(0);
    }

    void press(const char *button)
    {
        window->findChild<ucPictureButton *>(QLatin1StringView(button))->click();
    }
    bool reaches(int playState) const
    {
        return waitUntil([this, playState] { return window->player().playState() == playState; },
                         PlayTimeout);
    }

    QuietPrompt prompt;
    ProgramParts state;
    DesktopShell shell;
    KeyState keys;
    std::unique_ptr<FrmStations> window;
};

std::unique_ptr<PlayingWindow> shared;

PlayingWindow &playingWindow()
{
    if (!shared)
        shared = std::make_unique<PlayingWindow>();
    return *shared;
}

void BM_PlayToPlaying(benchmark::State &state)
{
    PlayingWindow &w = playingWindow();
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        w.press("cmdDSPlay");
        if (!w.reaches(3)) {
            state.SkipWithError("the station did not reach Playing");
            return;
        }
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        w.press("cmdDSStop");
        w.reaches(1);
    }
}
BENCHMARK(BM_PlayToPlaying)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

void BM_PlayingStation(benchmark::State &state)
{
    PlayingWindow &w = playingWindow();
    w.press("cmdDSPlay");
    if (!w.reaches(3)) {
        state.SkipWithError("the station did not reach Playing");
        return;
    }
    double cpuPercent = 0;
    for (auto _ : state) {
        const double cpuBefore = processCpuSeconds();
        QElapsedTimer clock;
        clock.start();
        // The station plays on while the event loop runs idle, as in the program.
        QEventLoop idle;
        QTimer::singleShot(CpuWindowMs, &idle, &QEventLoop::quit);
        idle.exec();
        cpuPercent = 100 * (processCpuSeconds() - cpuBefore) / (double(clock.nsecsElapsed()) / 1e9);
    }
    state.counters["cpu_percent"] = cpuPercent;
    state.counters["added_MB"] = processMegabytes("VmRSS:") - baselineMegabytes;
    state.counters["still_playing"] = w.window->player().playState() == 3;
}
BENCHMARK(BM_PlayingStation)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);

    if (const QString missing = IcecastStation::missing(); !missing.isEmpty()) {
        std::printf("Skipped: %s\n", qPrintable(missing));
        return 0;
    }
    IcecastStation icecast;
    if (const QString failed = icecast.start(); !failed.isEmpty()) {
        std::printf("The loopback station did not start: %s\n", qPrintable(failed));
        return 1;
    }
    station = &icecast;

    const QTemporaryDir appData;
    qputenv("APPDATA", QFile::encodeName(appData.path()));
    QDir().mkpath(appData.path() + QStringLiteral("/Tunecatch"));
    baselineMegabytes = processMegabytes("VmRSS:");

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    shared.reset();
    return 0;
}
