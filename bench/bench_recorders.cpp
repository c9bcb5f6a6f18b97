// Twenty recorder windows recording at once in this process, each from the
// scripted station at 128 kbit/s in real time, one file per song. The station
// runs as a process of its own (icyserve, built with the tests), so the CPU
// time and memory measured here are the recorders' alone.
// Targets: under 0.5 % of one core per stream; under 2 MB of resident memory
// per recording beyond the first.
#include "app/appstate.h"
#include "app/prompt.h"
#include "recorder/frmtc.h"
#include "recorder/powercontrol.h"

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

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

constexpr int Streams = 20;
constexpr int MeasuredSeconds = 30;
constexpr int BytesPerSecond = 128 * 1000 / 8;

// Nothing to ask: every recording writes new files.
class SilentPrompt : public Prompt
{
public:
    void message(const QString &, const QString &, Icon) override {}
    bool askYesNo(const QString &, const QString &, Icon) override { return true; }
    QString chooseOpenFile(const QString &, const QString &, const QString &) override { return {}; }
};

// No stop limit is set, so no power action is ever asked for.
class NoPower : public PowerControl
{
public:
    Version SystemVersion() const override { return {}; }
    bool ExitWindows(quint32) override { return false; }
    bool SetSuspendState(bool, bool, bool) override { return false; }
};

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Resident memory now, in KB.
double residentKb()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1024;
}

void runFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

void BM_TwentyRecordings(benchmark::State &state)
{
    QTemporaryDir data;
    qputenv("APPDATA", QFile::encodeName(data.path()));
    QProcess station;
    station.start(QCoreApplication::applicationDirPath() + QStringLiteral("/icyserve"),
                  {QString::number(BytesPerSecond), QString::number(BytesPerSecond), QStringLiteral("10")});
    if (!station.waitForStarted() || !station.waitForReadyRead(5000)) {
        state.SkipWithError("icyserve did not start (it is built with the tests)");
        return;
    }
    const QString url = QStringLiteral("http://127.0.0.1:") +
                        QString::fromLatin1(station.readLine().trimmed()) + QStringLiteral("/stream");

    SilentPrompt prompt;
    AppState app(QCoreApplication::applicationDirPath(), prompt);
    NoPower power;
    std::vector<std::unique_ptr<FrmTC>> windows;
    const auto startRecording = [&] {
        auto window = std::make_unique<FrmTC>(app, power);
        window->setAttribute(Qt::WA_DeleteOnClose, false);
        window->findChild<QLineEdit *>(QStringLiteral("txtStream"))->setText(url);
        window->findChild<QLineEdit *>(QStringLiteral("txtSave"))
            ->setText(QStringLiteral("./%STATION%_%SONG%.mp3"));
        window->findChild<QLabel *>(QStringLiteral("LblStation"))
            ->setText(QStringLiteral("Bench %1").arg(windows.size() + 1));
        window->findChild<QCheckBox *>(QStringLiteral("chkSingleSong"))->setChecked(true);
        window->show();
        window->findChild<QPushButton *>(QStringLiteral("cmdRecord"))->click();
        windows.push_back(std::move(window));
    };

    for (auto _ : state) {
        startRecording();
        runFor(2000);
        const double firstKb = residentKb();
        while (windows.size() < Streams)
            startRecording();
        runFor(2000);

        const double cpuBefore = cpuSeconds();
        QElapsedTimer wall;
        wall.start();
        runFor(MeasuredSeconds * 1000);
        const double cpu = cpuSeconds() - cpuBefore;
        const double elapsed = double(wall.elapsed()) / 1000;
        const double allKb = residentKb();
        state.SetIterationTime(elapsed);

        double least = -1;
        for (const auto &window : windows)
            least =
                least < 0 ? window->Stream().BytesTotal() : std::min(least, window->Stream().BytesTotal());
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
    station.kill();
    station.waitForFinished();
}
BENCHMARK(BM_TwentyRecordings)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

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
