#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

class PlayerRemote;

// Makes the player one of the desktop's media players: the panel's player
// controls, the lock screen and the keyboard's media keys then drive it.
class MprisService : public QObject
{
    Q_OBJECT

public:
    static constexpr QLatin1StringView BusName{"org.mpris.MediaPlayer2.tunecatch"};

    MprisService(PlayerRemote &player, QDBusConnection bus, QObject *parent = nullptr);
    ~MprisService() override;
    Q_DISABLE_COPY_MOVE(MprisService)

    // Offers the player on the bus, under BusName or, when another instance
    // holds that, under BusName + ".instance" + the process id. False with no
    // bus to offer it on; the program then goes on without it.
    bool start();
    // The name taken; empty before start() or when it failed.
    QString busName() const { return m_busName; }

private:
    QDBusConnection m_bus;
    QObject m_object; // the adaptors hang on it
    QString m_busName;
};
