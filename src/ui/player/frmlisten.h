#pragma once

#include "player/listensession.h"
#include "ui/player/playerview.h"

#include <QWidget>

struct LaunchOptions;
struct ThemeColors;
class ListenControls;
class MediaPlayer;
class QLabel;
class QPushButton;

// The listening window: plays one station or one recorded file in a player
// of its own, with video where the stream has it. The opener sets ListenUrl,
// ListenTitle and ListenRow, shows the window and calls Play. What is played
// and when is its ListenSession's; the window shows the session's captions
// and wires its keys and buttons to it. Media without pictures gets a compact
// player instead of an empty picture.
class FrmListen : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmListen)

public:
    static inline const QString WarmUpFile = QStringLiteral("miniTC.avi");
    // Where the hidden warm-up window keeps its left edge.
    static constexpr int WarmUpLeft = -20000;

    FrmListen(const LaunchOptions &launch, const ThemeColors &colors, const MediaPlayerFactory &players,
              QWidget *parent = nullptr);

    // A stream address, a playlist address or the full path of a file.
    QString ListenUrl;
    // The station's name or the file's name, shown in the captions.
    QString ListenTitle;
    // The main window's grid row of the station; ListenSession::FileRow or
    // ListenSession::WarmUpRow otherwise.
    int ListenRow = ListenSession::FileRow;

    void Play();

    MediaPlayer &MPlayer() const { return m_view->player(); }
    bool compact() const { return m_compact; }

signals:
    // A catalogue station has started to play: kind ListenSession::PlayedKind,
    // the grid row, and today's date as text.
    void stationPlayed(int kind, int row, const QString &date);
    // The station's stream names the song now on (empty: none any more).
    void songChanged(const QString &station, const QString &title);

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showView(bool visible);
    int playerHeight() const;
    // Once the media is known: the compact player for sound, the picture for video.
    void fitToMedia();
    void setCompact(bool compact);

    PlayerView *m_view;
    ListenSession *m_session;
    ListenControls *m_controls;
    bool m_viewWanted = true;
    bool m_compact = false;
    QLabel *lblInfo;
    QPushButton *cmdFullScreen;
    QPushButton *cmdContext;
};
