// Twenty recorder windows recording at once in this process, each from the
// scripted station at 128 kbit/s in real time, one file per song. The station
// runs as a process of its own (icyserve, built with the tests), so the CPU
// time and memory measured here are the recorders' alone.
// Targets: under 0.5 % of one core per stream; under 2 MB of resident memory
// per recording beyond the first. A second benchmark records one station that
// floods the recorder, and one whose answer never ends, and shows the peak
// memory of that recording (target: under 40 MB whatever a station sends).
#include "benchsupport.h"

#include "base/launchoptions.h"
#include "base/powercontrol.h"
#include "recorder/streamrecorder.h"
#include "ui/recorder/frmtc.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>


#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr int Streams = 20;
constexpr int MeasuredSeconds = 30;
constexpr int BytesPerSecond = 128 * 1000 / 8;

// No stop limit is set, so no power action is ever asked for.
class NoPower : public PowerControl
{
public:
    Version systemVersion() const override { return {}; }
    bool exitWindows(quint32) override { return false; }
    bool SetSuspendState(bool, bool, bool) override { return false; }
};

// Runs the event loop for a while; `sample` is called every few
// milliseconds and ends the wait early by returning true.
void runFor(int milliseconds, const std::function<bool()> &sample = {})
{
    QEventLoop loop;
    QTimer tick;
    if (sample) {
        QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
            if (sample())
                loop.quit();
        });
        tick.start(20);
    }
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

// What a benchmark records with: a data folder of its own, the scripted
// station in a process of its own (url stays empty when it did not start),
// and what a recorder window is given.
struct Setup
{
    explicit Setup(const QStringList &stationArguments)
    {
        qputenv("APPDATA", QFile::encodeName(data.path()));
        station.start(QCoreApplication::applicationDirPath() + QStringLiteral("/icyserve"), stationArguments);
        if (station.waitForStarted() && station.waitForReadyRead(5000))
            url = QStringLiteral("http://127.0.0.1:") + QString::fromLatin1(station.readLine().trimmed()) +
                  QStringLiteral("/stream");
    }
    ~Setup()
    {
        station.kill();
        station.waitForFinished();
    }
    Setup(const Setup &) = delete;
    Setup &operator=(const Setup &) = delete;

    // A recorder window recording the station, one file per song.
    std::unique_ptr<FrmTC> startRecording(int number)
    {
        auto window = std::make_unique<FrmTC>(prompt, launch, power);
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->findChild<QLineEdit *>(QStringLiteral("txtStream"))->setText(url);
        window->findChild<QLineEdit *>(QStringLiteral("txtSave"))
            ->setText(QStringLiteral("./%STATION%_%SONG%.mp3"));
        window->findChild<QLabel *>(QStringLiteral("LblStation"))
            ->setText(QStringLiteral("Bench %1").arg(number));
        window->findChild<QCheckBox *>(QStringLiteral("chkSingleSong"))->setChecked(true);
        window->show();
        window->findChild<QPushButton *>(QStringLiteral("cmdRecord"))->click();
        return window;
    }

    QTemporaryDir data;
    QProcess station;
    QString url;
    QuietPrompt prompt{true}; // nothing to ask: every recording writes new files
    LaunchOptions launch;
    NoPower power;
};

void BM_TwentyRecordings(benchmark::State &state)
{
    Setup setup({QString::number(BytesPerSecond), QString::number(BytesPerSecond), QStringLiteral("10")});
    if (setup.url.isEmpty()) {
        state.SkipWithError("icyserve did not start (it is built with the tests)");
        return;
    }
    std::vector<std::unique_ptr<FrmTC>> windows;
    const auto startRecording = [&] { windows.push_back(setup.startRecording(int(windows.size()) + 1)); };

    for (auto _ : state) {
        startRecording();
        runFor(2000);
        const double firstKb = (processMegabytes("VmRSS:") * 1024);
        while (windows.size() < Streams)
            startRecording();
        runFor(2000);

        const double cpuBefore = processCpuSeconds();
        QElapsedTimer wall;
        wall.start();
        runFor(MeasuredSeconds * 1000);
        const double cpu = processCpuSeconds() - cpuBefore;
        const double elapsed = double(wall.elapsed()) / 1000;
        const double allKb = (processMegabytes("VmRSS:") * 1024);
        state.SetIterationTime(elapsed);

        double least = -1;
        for (const auto &window : windows)
            least =
                least < 0 ? window->stream().BytesTotal() : std::min(least, window->stream().BytesTotal());
        state.counters["cpu_per_stream_pct"] = cpu / elapsed / Streams * 100;
        state.counters["rss_first_kb"] = firstKb;
        state.counters["rss_growth_per_recording_kb"] = (allKb - firstKb) / (Streams - 1);
        // Every stream must have kept up with real time, or the figures mean nothing.
        state.counters["least_recorded_s"] = least / BytesPerSecond;
        if (least < double(BytesPerSecond) * MeasuredSeconds)
            state.SkipWithError("a recording fell behind the station");
    }
    for (const auto &window : windows)
        window->findChild<QPushButton *>(QStringLiteral("cmdRecord"))->click();
}
BENCHMARK(BM_TwentyRecordings)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// One recording from a station that sends as fast as the loopback carries
// (argument 0), or whose answer never ends (argument 1): the peak of resident
// memory above what the process held before, and the recorder's own peaks.
void BM_OneRecordingUnderPressure(benchmark::State &state)
{
    const bool flood = state.range(0) == 0;
    Setup setup({QStringLiteral("0"), QStringLiteral("16000"), QStringLiteral("10"),
                 flood ? QStringLiteral("flood") : QStringLiteral("endless-header")});
    if (setup.url.isEmpty()) {
        state.SkipWithError("icyserve did not start (it is built with the tests)");
        return;
    }
    for (auto _ : state) {
        const double before = (processMegabytes("VmRSS:") * 1024);
        double peak = before;
        const auto window = setup.startRecording(1);
        QElapsedTimer wall;
        wall.start();
        // A flood fills the disk fast: a few hundred megabytes tell enough.
        runFor(10000, [&] {
            peak = std::max(peak, (processMegabytes("VmRSS:") * 1024));
            return !window->Recording() || window->stream().BytesTotal() > 300e6;
        });
        state.SetIterationTime(double(wall.elapsed()) / 1000);
        state.counters["peak_rss_growth_kb"] = peak - before;
        state.counters["peak_receive_buffer_kb"] = window->stream().peakBuffer() / 1024;
        state.counters["peak_header_kb"] = double(window->recorder().connection().peakHeader()) / 1024;
        state.counters["recorded_mb"] = window->stream().BytesTotal() / 1e6;
        state.counters["ended_by_itself"] = window->Recording() ? 0 : 1;
        if (window->Recording())
            window->findChild<QPushButton *>(QStringLiteral("cmdRecord"))->click();
    }
}
BENCHMARK(BM_OneRecordingUnderPressure)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
