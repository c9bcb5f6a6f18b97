#pragma once

#include "ui/player/playerview.h"

#include <QWidget>

struct LaunchOptions;
struct ThemeColors;
class FileDL;
class MediaPlayer;
class QLabel;
class QPushButton;

// The listening window: plays one station or one recorded file in a player
// of its own, with video where the stream has it. The opener sets ListenUrl,
// ListenTitle and ListenRow, shows the window and calls Play. A stream that
// falls back without playing is tried again, five times in all; a catalogue
// station that starts playing is reported through StationPlayed.
class FrmListen : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmListen)

public:
    static inline const QString TagPlaying = QStringLiteral("PLSPLAY");
    static inline const QString WarmUpFile = QStringLiteral("miniTC.avi");
    static constexpr int RetryBudget = 5;
    // ListenRow of a file chosen by Replay, and of the hidden warm-up window.
    static constexpr int FileRow = -1;
    static constexpr int WarmUpRow = -3;
    static constexpr int WarmUpPlayCount = 1000000000;
    static constexpr int WarmUpLeft = -20000;
    // The one kind of notification: a catalogue station has started to play.
    static constexpr int PlayedKind = 1;

    FrmListen(const LaunchOptions &launch, const ThemeColors &colors, const MediaPlayerFactory &players,
              QWidget *parent = nullptr);

    // A stream address, a playlist address or the full path of a file.
    QString ListenUrl;
    // The station's name or the file's name, shown in the captions.
    QString ListenTitle;
    // The main window's grid row of the station; FileRow or WarmUpRow otherwise.
    int ListenRow = FileRow;

    void Play();

    MediaPlayer &MPlayer() const { return *m_player; }

signals:
    // kind PlayedKind, the grid row, and today's date as text.
    void StationPlayed(int kind, int row, const QString &date);

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void StartPlayback(const QString &address);
    void FetchPlaylist();
    void Escape();
    int playerHeight() const;

    void MPlayer_PlayStateChange(int state);
    void FileDL_DownloadComplete(const QString &key, const QByteArray &body);
    void FileDL_DownloadError(const QString &key, int statusCode, const QString &statusText);
    void cmdFullScreen_Click();
    void cmdContext_Click();

    const LaunchOptions &m_launch;
    PlayerView *m_view;
    MediaPlayer *m_player;
    FileDL *m_fileDL;
    QLabel *lblInfo;
    QPushButton *cmdFullScreen;
    QPushButton *cmdContext;

    // The address being played: ListenUrl, or the stream its playlist named.
    QString m_address;
    int m_retries = RetryBudget;
    bool m_failed = false;
    bool m_closing = false;
};
