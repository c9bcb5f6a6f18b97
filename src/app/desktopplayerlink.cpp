#include "app/desktopplayerlink.h"

#include "desktop/playerremote.h"
#include "player/mainplayer.h"
#include "player/mediaplayer.h"
#include "ui/player/ucplaybar.h"
#include "ui/stations/frmstations.h"

#include <QUrl>

DesktopPlayerLink::DesktopPlayerLink(FrmStations &window, PlayerRemote &remote, QObject *parent)
    : QObject(parent), m_window(window), m_remote(remote)
{
    MainPlayer &player = window.mainPlayer();
    ucPlayBar &bar = window.playBar();
    followPlayState(player.playState());
    m_remote.setStation(player.stationName(), {});
    m_remote.setTitle(player.songTitle());
    m_remote.setVolume(bar.volume());
    followRows();

    // Connections from the window live as long as this link; those from the
    // remote as long as the window's part they act on.
    connect(&player, &MainPlayer::playStateChanged, this, &DesktopPlayerLink::followPlayState);
    connect(&player, &MainPlayer::songChanged, this, [this](const QString &station, const QString &title) {
        m_remote.setStation(station, {});
        m_remote.setTitle(title);
    });
    connect(&bar, &ucPlayBar::Volume, this, [this](int volume) { m_remote.setVolume(volume); });
    connect(&window, &FrmStations::stationStepsChanged, this, &DesktopPlayerLink::followRows);

    // A station that failed after it played leaves Pause and Stop in the
    // bar: Play starts it again, as Stop and then Play do.
    connect(&remote, &PlayerRemote::playRequested, &bar, [&bar] {
        if (!bar.press(QStringLiteral("Play")) && bar.press(QStringLiteral("Stop")))
            bar.press(QStringLiteral("Play"));
    });
    connect(&remote, &PlayerRemote::pauseRequested, &bar, [&bar] { bar.press(QStringLiteral("Pause")); });
    connect(&remote, &PlayerRemote::stopRequested, &bar, [&bar] { bar.press(QStringLiteral("Stop")); });
    connect(&remote, &PlayerRemote::volumeRequested, &bar, &ucPlayBar::setVolume);
    connect(&remote, &PlayerRemote::nextRequested, &window, [&window] { window.stepStation(1); });
    connect(&remote, &PlayerRemote::previousRequested, &window, [&window] { window.stepStation(-1); });
    connect(&remote, &PlayerRemote::raiseRequested, &window, [this] { raiseWindow(); });
}

void DesktopPlayerLink::followPlayState(int state)
{
    switch (state) {
    case MediaPlayer::Paused:
        m_remote.setStatus(PlayerRemote::Status::Paused);
        break;
    case MediaPlayer::Undefined:
    case MediaPlayer::Stopped:
    case MediaPlayer::MediaEnded:
    case MediaPlayer::Ready:
        m_remote.setStatus(PlayerRemote::Status::Stopped);
        break;
    default:
        // Connecting, buffering and waiting for data count as playing, as
        // the play bar shows them.
        m_remote.setStatus(PlayerRemote::Status::Playing);
        break;
    }
    followRows();
}

void DesktopPlayerLink::followRows()
{
    // Play starts the current row's station, or resumes a pause.
    m_remote.setCanPlay(m_window.canStepStation(0) || m_remote.status() == PlayerRemote::Status::Paused);
    m_remote.setNavigation(m_window.canStepStation(1), m_window.canStepStation(-1));
}

void DesktopPlayerLink::raiseWindow()
{
    m_window.setWindowState(m_window.windowState() & ~Qt::WindowMinimized);
    m_window.show();
    m_window.raise();
    m_window.activateWindow();
}
