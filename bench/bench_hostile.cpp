// The program as a scheduled start runs it (launch mode, no display),
// recording from a station that misbehaves: the scripted station runs as a
// process of its own (icyserve, built with the tests). For each station the
// peak resident memory of the program, how long it took to end by itself, and
// for the floods how long it took to end after SIGTERM with everything written.
// Targets: the peak stays within 40 MB of a recording of a well-behaved
// station (the first row), every wait ends by itself within about 15 s, and
// SIGTERM ends the program within 1 s. The rows with a limit show that it
// holds: a minutes limit by the clock however slowly the station sends
// (ended_by_itself_s), a size limit at the byte at full speed (file_mb).
#include "benchsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <signal.h>

#include <algorithm>

namespace {

struct Station
{
    const char *mode;
    const char *path;
    int seconds; // how long the program may record before it is told to end
    int bytesPerSecond = 16000;
    const char *limit = ""; // switches for a stop limit
};

const Station stations[] = {
    {"", "/stream", 6},               // well-behaved, 128 kbit/s: the reference
    {"flood", "/stream", 6, 0},          // as fast as the loopback carries
    {"flood-controls", "/stream", 6, 0}, // the same, titles with tabs and control characters
    {"slow-header", "/stream", 25, 1},   // one byte a second, its header included
    {"web-page", "/stream", 25},
    {"bad-interval", "/stream", 25},
    {"endless-pls", "/list.pls", 25},
    {"silent-pls", "/list.pls", 25},
    {"", "/stream", 25, 1, "-t 0.1"},      // a byte a second after its header: 6 s by the clock
    {"no-bitrate", "/stream", 25, 16000, "-t 0.1"},
    {"flood", "/stream", 25, 0, "-b 0.05"}, // 52,429 bytes at full speed
};

double referencePeak = 0;

void BM_HostileStation(benchmark::State &state)
{
    const Station &station = stations[state.range(0)];
    const QByteArray label = QByteArray(*station.mode ? station.mode : "well-behaved") +
                             (station.bytesPerSecond == 1 && !*station.mode ? " 1 B/s" : "") +
                             (*station.limit ? QByteArray(" ") + station.limit : QByteArray());
    state.SetLabel(label.toStdString());
    const QString folder = QCoreApplication::applicationDirPath();
    QProcess server;
    server.start(folder + QStringLiteral("/icyserve"),
                 {QString::number(station.bytesPerSecond), QStringLiteral("16000"), QStringLiteral("10"),
                  QString::fromLatin1(station.mode)});
    if (!server.waitForStarted() || !server.waitForReadyRead(5000)) {
        state.SkipWithError("icyserve did not start (it is built with the tests)");
        return;
    }
    const QString url = QStringLiteral("http://127.0.0.1:") +
                        QString::fromLatin1(server.readLine().trimmed()) + QString::fromLatin1(station.path);
    for (auto _ : state) {
        // A copy of the program in a profile of its own: a first start takes over
        // the installed station list, which must not be the build tree's.
        QTemporaryDir profile;
        const QString program = profile.filePath(QStringLiteral("tunecatch"));
        QFile::copy(folder + QStringLiteral("/../bin/tunecatch"), program);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), profile.path());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), profile.filePath(QStringLiteral("config")));
        env.insert(QStringLiteral("XDG_DATA_HOME"), profile.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("APPDATA"), profile.filePath(QStringLiteral("data")));
        env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        QProcess run;
        run.setProcessEnvironment(env);
        QStringList arguments = {QStringLiteral("-a"), url, QStringLiteral("-w"), QStringLiteral("Bench"),
                                 QStringLiteral("-s"), profile.filePath(QStringLiteral("%STATION%.mp3"))};
        arguments += QString::fromLatin1(station.limit).split(u' ', Qt::SkipEmptyParts);
        run.start(program, arguments);
        if (!run.waitForStarted()) {
            state.SkipWithError("the program did not start");
            return;
        }
        const qint64 pid = run.processId();
        double peak = 0;
        QElapsedTimer clock;
        clock.start();
        while (run.state() != QProcess::NotRunning && clock.elapsed() < station.seconds * 1000) {
            peak = std::max(peak, processMegabytes("VmHWM:", pid));
            run.waitForFinished(20);
        }
        const bool endedByItself = run.state() == QProcess::NotRunning;
        state.counters["ended_by_itself_s"] = endedByItself ? double(clock.elapsed()) / 1000 : -1;
        double termMs = -1;
        if (!endedByItself) {
            peak = std::max(peak, processMegabytes("VmHWM:", pid));
            QElapsedTimer term;
            term.start();
            ::kill(pid_t(pid), SIGTERM);
            if (!run.waitForFinished(20000))
                run.kill();
            termMs = double(term.elapsed());
        }
        run.waitForFinished();
        state.SetIterationTime(double(clock.elapsed()) / 1000);
        state.counters["peak_rss_mb"] = peak;
        if (state.range(0) == 0)
            referencePeak = peak;
        if (referencePeak > 0)
            state.counters["above_reference_mb"] = peak - referencePeak;
        state.counters["sigterm_to_exit_ms"] = termMs;
        state.counters["file_mb"] =
            double(QFileInfo(profile.filePath(QStringLiteral("Bench.mp3"))).size()) / 1e6;
    }
    server.kill();
    server.waitForFinished();
}
BENCHMARK(BM_HostileStation)
    ->DenseRange(0, int(std::size(stations)) - 1)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kSecond);

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
