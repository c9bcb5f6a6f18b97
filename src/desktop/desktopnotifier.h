#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <optional>

class QDBusPendingCallWatcher;

// Tells the desktop's notification service which song a station plays. Each
// notification replaces the one before, so song changes never pile up. With
// no bus or no service nothing is shown and nothing is said.
class DesktopNotifier : public QObject
{
    Q_OBJECT

public:
    // Longer artists, titles and station names are cut to this many characters.
    static constexpr qsizetype MaxTextLength = 120;

    explicit DesktopNotifier(QDBusConnection bus, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(DesktopNotifier)

    // streamTitle as the station sends it, "Artist - Title"; an empty one shows nothing.
    void showSong(const QString &station, const QString &streamTitle);

signals:
    // The service answered a notification (for those who wait on it).
    void shown();

private:
    struct Song
    {
        QString station;
        QString title;
    };
    void sendNext();
    void askCapabilities();
    void finished(QDBusPendingCallWatcher *call);

    QDBusConnection m_bus;
    std::optional<Song> m_next;
    // Only one call at a time: the next needs the id the last one got.
    bool m_calling = false;
    std::optional<bool> m_markup; // whether the service reads markup in the body
    uint m_shownId = 0;
};
