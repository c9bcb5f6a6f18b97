#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class FileDL;
class MediaPlayer;
class StreamProbe;
struct ProbeReport;
struct LaunchOptions;

// What a listening window does with its player: it plays one station or one
// recorded file, resolves a playlist address through its own FileDL, tries a
// stream that falls back without playing again (five times in all), reports a
// catalogue station each time it starts to play, and keeps the hidden warm-up
// player paused. A stream that is given up, or that does not play within the
// start limit, is stopped, and the information line says why once a probe has
// asked the address. What the window is to show or do comes out as signals.
class ListenSession : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ListenSession)

public:
    static inline const QString TagPlaying = QStringLiteral("PLSPLAY");
    static constexpr int RetryBudget = 5;
    // The row of a file chosen by Replay, and of the hidden warm-up window.
    static constexpr int FileRow = -1;
    static constexpr int WarmUpRow = -3;
    static constexpr int WarmUpPlayCount = 1000000000;
    // The one kind of report: a catalogue station has started to play.
    static constexpr int PlayedKind = 1;
    static constexpr int DefaultStartLimit = 15000;
    static constexpr int DefaultProbeLimit = 5000;

    ListenSession(const LaunchOptions &launch, MediaPlayer &player, QObject *parent = nullptr);

    // Plays url (a stream address, a playlist address or the full path of a
    // file) under title; row is the main window's grid row of the station,
    // or FileRow or WarmUpRow.
    void play(const QString &url, const QString &title, int row);
    // Full screen, while the player plays.
    void enterFullScreen();
    // Leaves full screen; false when the player was not in it.
    bool leaveFullScreen();
    // The Escape key: leaves full screen, or else asks for the window to close.
    void escape();
    // The window unloads: the player stops and lets go; its later states change nothing.
    void close();
    // Milliseconds a stream has to start playing, and the probe that finds
    // out why one did not has to answer.
    void setTimeLimits(int start, int probe);

signals:
    // The window's caption.
    void captionChanged(const QString &caption);
    // The line of information: the playlist's query, then the stream it named.
    void infoChanged(const QString &info);
    // The player's view is to fill the window and show, or to hide with no height.
    void viewRequested(bool visible);
    // The warm-up window is to move out of sight.
    void outOfSightRequested();
    void closeRequested();
    // kind PlayedKind, the grid row, and today's date as text.
    void stationPlayed(int kind, int row, const QString &date);
    // A catalogue station's stream names the song now on (empty: none any more).
    void songChanged(const QString &station, const QString &title);

private:
    void startPlayback(const QString &address);
    void FetchPlaylist();
    void pauseWarmUp();
    // Stops the stream for good and asks its address why it did not play.
    void giveUp();
    void showReason(const ProbeReport &report);

    void mPlayerPlayStateChange(int state);
    void mPlayerTitleChange(const QString &title);
    void fileDLDownloadComplete(const QString &key, const QByteArray &body);
    void fileDLDownloadError(const QString &key, int statusCode, const QString &statusText);

    const LaunchOptions &m_launch;
    MediaPlayer &MPlayer;
    FileDL *m_fileDL;
    QTimer m_startLimit;
    StreamProbe *m_probe;

    QString m_url;
    QString m_title;
    int m_row = FileRow;
    // The address being played: the url, or the stream its playlist named.
    QString m_address;
    int m_retries = RetryBudget;
    bool m_failed = false;
    bool m_closing = false;
};
