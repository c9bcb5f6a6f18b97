#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

class PlayerRemote;

// The two interfaces a desktop's media controls speak, over a PlayerRemote.
// Their member names are the ones those interfaces define.

class MprisRootAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2")
    Q_PROPERTY(bool CanQuit READ canQuit)
    Q_PROPERTY(bool CanRaise READ canRaise)
    Q_PROPERTY(bool HasTrackList READ hasTrackList)
    Q_PROPERTY(QString Identity READ identity)
    Q_PROPERTY(QString DesktopEntry READ desktopEntry)
    Q_PROPERTY(QStringList SupportedUriSchemes READ supportedUriSchemes)
    Q_PROPERTY(QStringList SupportedMimeTypes READ supportedMimeTypes)

public:
    MprisRootAdaptor(QObject *object, PlayerRemote &player);
    Q_DISABLE_COPY_MOVE(MprisRootAdaptor)

    bool canQuit() const { return false; }
    bool canRaise() const { return true; }
    bool hasTrackList() const { return false; }
    QString identity() const { return QStringLiteral("Tunecatch"); }
    QString desktopEntry() const { return QStringLiteral("tunecatch"); }
    QStringList supportedUriSchemes() const { return {}; }
    QStringList supportedMimeTypes() const { return {}; }

public slots:
    void Raise();
    // The desktop may not close the program: recordings may be running.
    void Quit();

private:
    PlayerRemote &m_player;
};

// Changes of its properties go out as one PropertiesChanged signal per turn
// of the event loop, so a new station and its first title make one signal.
class MprisPlayerAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.mpris.MediaPlayer2.Player")
    Q_PROPERTY(QString PlaybackStatus READ playbackStatus)
    Q_PROPERTY(double Rate READ rate WRITE setRate)
    Q_PROPERTY(QVariantMap Metadata READ metadata)
    Q_PROPERTY(double Volume READ volume WRITE setVolume)
    Q_PROPERTY(qlonglong Position READ position)
    Q_PROPERTY(double MinimumRate READ rate)
    Q_PROPERTY(double MaximumRate READ rate)
    Q_PROPERTY(bool CanGoNext READ canGoNext)
    Q_PROPERTY(bool CanGoPrevious READ canGoPrevious)
    Q_PROPERTY(bool CanPlay READ canPlay)
    Q_PROPERTY(bool CanPause READ canPlay)
    Q_PROPERTY(bool CanSeek READ canSeek)
    Q_PROPERTY(bool CanControl READ canControl)

public:
    // Where the interface lives; PropertiesChanged names it.
    static constexpr QLatin1StringView ObjectPath{"/org/mpris/MediaPlayer2"};

    MprisPlayerAdaptor(QObject *object, PlayerRemote &player, QDBusConnection bus);
    Q_DISABLE_COPY_MOVE(MprisPlayerAdaptor)

    QString playbackStatus() const;
    // A live stream plays at its own pace: the rate is always 1.
    double rate() const { return 1.0; }
    void setRate(double) {}
    QVariantMap metadata() const;
    double volume() const;
    // -1 counts as 0 and 7 as 1; a value that is not a number changes nothing.
    void setVolume(double volume);
    qlonglong position() const { return 0; }
    bool canGoNext() const;
    bool canGoPrevious() const;
    bool canPlay() const;
    bool canSeek() const { return false; }
    bool canControl() const { return true; }

public slots:
    void Next();
    void Previous();
    void Pause();
    void PlayPause();
    void Stop();
    void Play();
    // Streams cannot seek, and addresses are opened from the station list.
    void Seek(qlonglong offset);
    void SetPosition(const QDBusObjectPath &track, qlonglong position);
    void OpenUri(const QString &uri);

private:
    void changed(std::initializer_list<const char *> names);
    void sendChanges();

    PlayerRemote &m_player;
    QDBusConnection m_bus;
    QStringList m_changed;
    QTimer m_send;
    // A new track for every station and title, so the desktop sees each as new.
    quint64 m_track = 1;
};
