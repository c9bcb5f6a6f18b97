// A title change on the main window's player, from the media to everything
// that follows it: the panel's player (a PropertiesChanged signal received by
// a desktop's connection), the notification (received by the notification
// service) and the history (the entry in memory and its line in the file).
// Target: 100 ms. The bus is a dbus-daemon of the benchmark's own.
#include "benchsupport.h"

#include "app/desktopparts.h"
#include "app/desktopshell.h"
#include "app/keystate.h"
#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "controls/lynxgrid.h"
#include "player/mainplayer.h"
#include "support/fakenotifications.h"
#include "support/mprisclient.h"
#include "support/privatebus.h"
#include "support/scriptedplayer.h"
#include "ui/stations/frmstations.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

constexpr qint64 GiveUpMs = 5000;

void BM_TitleReachesTheDesktop(benchmark::State &state)
{
    QTemporaryDir folder;
    QuietPrompt prompt;
    ProgramParts parts(folder.path(), prompt);
    Station station;
    station.Name = QStringLiteral("Bench FM");
    station.StreamURL = QStringLiteral("http://127.0.0.1:9/bench");
    parts.catalogue.append(station);
    DesktopShell shell;
    KeyState keys;
    QList<ScriptedPlayer *> players;
    FrmStations window(stationWindowParts(parts), {prompt, shell, keys, [] { return nullptr; }},
                       [&players](QWidget *owner) {
                           return new PlayerView(players.emplace_back(new ScriptedPlayer), nullptr, owner);
                       });

    PrivateBus bus;
    FakeNotifications notifications;
    notifications.serveOn(bus.connect());
    const QString historyPath = folder.filePath(QStringLiteral("history.tsv"));
    DesktopParts desktop({historyPath, bus.connect(), [] { return true; }});
    desktop.open();
    desktop.attach(window);
    MprisClient panel;
    panel.listen(bus.connect(), desktop.mpris().busName());

    ScriptedPlayer &wmp1 = *players.first();
    window.findChild<LynxGrid *>(QStringLiteral("LynxGrid1"))->setRow(0);
    window.mainPlayer().play();
    wmp1.enter(MediaPlayer::Playing);
    int serial = 0;
    for (auto _ : state) {
        const QString title = QStringLiteral("Artist - Song number %1").arg(++serial);
        const qsizetype shown = notifications.shown.size();
        const qint64 fileSize = QFileInfo(historyPath).size();
        bool panelHeard = false;
        const QMetaObject::Connection heard =
            QObject::connect(&panel, &MprisClient::recorded, &panel, [&] { panelHeard = true; });
        QElapsedTimer clock;
        clock.start();
        emit wmp1.titleChanged(title);
        // Busy: the file's growth is seen only by looking.
        while (!(panelHeard && notifications.shown.size() > shown &&
                 desktop.history().at(desktop.history().size() - 1).title == title &&
                 QFileInfo(historyPath).size() > fileSize) &&
               clock.elapsed() < GiveUpMs)
            QCoreApplication::processEvents();
        QObject::disconnect(heard);
        if (clock.elapsed() >= GiveUpMs) {
            state.SkipWithError("the title did not reach every part");
            break;
        }
        panel.signalled();
    }
}
BENCHMARK(BM_TitleReachesTheDesktop)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    QApplication app(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
