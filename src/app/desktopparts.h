#pragma once

#include "desktop/desktopnotifier.h"
#include "desktop/mprisservice.h"
#include "desktop/playerremote.h"
#include "history/historystore.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>

class FrmStations;
class StreamRecorder;

// The program's place on the desktop: the history of what played, the main
// window's player as the desktop's media player (panel, lock screen, media
// keys) and the song notifications. Every title a station names while it
// plays or records goes into the history; one that is listened to also
// becomes a notification when those are wanted.
class DesktopParts : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DesktopParts)

public:
    struct Options
    {
        QString historyPath;
        // The session bus; a connection that is not connected leaves the desktop out.
        QDBusConnection bus;
        // Whether the user wants songs told. They never are while a window
        // of the program is active.
        std::function<bool()> notificationsOn;
    };

    explicit DesktopParts(Options options, QObject *parent = nullptr);

    // Reads the history and offers the player on the bus. What the user
    // should be told (a damaged history moved aside), empty when all went well.
    QString open();

    HistoryStore &history() { return m_history; }
    const MprisService &mpris() const { return m_mpris; }

    // The main window's player becomes the desktop's media player; its songs
    // and those of its listening windows are heard.
    void attach(FrmStations &window);
    // The recording's songs go into the history.
    void attach(const StreamRecorder &recorder);

    // A song the user listens to; an empty title names none.
    void heard(const QString &station, const QString &title);

signals:
    // The history file could not be written.
    void problem(const QString &message);

private:
    HistoryStore m_history;
    PlayerRemote m_remote;
    MprisService m_mpris;
    DesktopNotifier m_notifier;
    std::function<bool()> m_notificationsOn;
};
