#include "app/desktopparts.h"

#include "app/desktopplayerlink.h"
#include "player/mainplayer.h"
#include "recorder/streamrecorder.h"
#include "ui/stations/frmstations.h"

#include <QApplication>

#include <memory>

DesktopParts::DesktopParts(Options options, QObject *parent)
    : QObject(parent), m_history(std::move(options.historyPath)), m_mpris(m_remote, options.bus),
      m_notifier(options.bus), m_notificationsOn(std::move(options.notificationsOn))
{
    connect(&m_history, &HistoryStore::problem, this, &DesktopParts::problem);
}

QString DesktopParts::open()
{
    const QString message = m_history.open();
    // Without a session bus the program goes on as before, and says nothing.
    m_mpris.start();
    return message;
}

void DesktopParts::attach(FrmStations &window)
{
    new DesktopPlayerLink(window, m_remote, this);
    connect(&window.mainPlayer(), &MainPlayer::songChanged, this, &DesktopParts::heard);
    connect(&window, &FrmStations::listeningSongChanged, this, &DesktopParts::heard);
}

void DesktopParts::attach(const StreamRecorder &recorder)
{
    // The station field names the recording; without it, the station's own name.
    auto announced = std::make_shared<QString>();
    connect(&recorder, &StreamRecorder::stationNameChanged, this,
            [announced](const QString &name) { *announced = name; });
    connect(&recorder, &StreamRecorder::titleChanged, this,
            [this, &recorder, announced](const QString &title) {
                const QString station = recorder.settings().station.trimmed();
                m_history.add(station.isEmpty() ? *announced : station, title);
            });
}

void DesktopParts::heard(const QString &station, const QString &title)
{
    if (title.trimmed().isEmpty())
        return;
    m_history.add(station, title);
    // Whoever looks at one of the program's windows sees the song there.
    if (m_notificationsOn && m_notificationsOn() && !QApplication::activeWindow())
        m_notifier.showSong(station, title);
}
