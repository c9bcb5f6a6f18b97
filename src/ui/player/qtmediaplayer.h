#pragma once

#include "player/mediaplayer.h"

#include <QTimer>

class PlayerView;
class QAudioOutput;
class QMediaPlayer;
class QVideoWidget;
class QWidget;
class StreamTitleWatch;

// The media player over Qt Multimedia (GStreamer on Linux): QMediaPlayer for
// the media, QAudioOutput for sound, QVideoWidget for pictures. Qt's playback
// and media states are read together and turned into the one play-state
// number the player logic knows (docs/architecture.md has the table). The number is
// worked out once the event that changed Qt's states is over, so that a
// handler of PlayStateChange may set the URL again without re-entering Qt.
// The song's title comes from the media's own metadata; for a station whose
// titles Qt does not pass on, a StreamTitleWatch reads them from the stream
// once it plays.
class QtMediaPlayer : public MediaPlayer
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QtMediaPlayer)

public:
    // Pictures are shown on video, which must outlive the player.
    explicit QtMediaPlayer(QVideoWidget &video, QObject *parent = nullptr);
    ~QtMediaPlayer() override;

    // A player with a view of its own that belongs to owner.
    static PlayerView *create(QWidget *owner);

    QString URL() const override { return m_url; }
    void setURL(const QString &url) override;
    int playState() const override { return m_state; }
    QString status() const override;

    void play() override;
    void pause() override;
    void stop() override;

    bool mute() const override;
    void setMute(bool mute) override;
    int volume() const override { return m_volume; }
    void setVolume(int volume) override;
    void setPlayCount(int count) override;

    bool fullScreen() const override;
    void setFullScreen(bool on) override;

    bool hasVideo() const override;
    qint64 duration() const override;
    QString title() const override;
    qint64 position() const override;
    void setPosition(qint64 milliseconds) override;

    void clearPlaylist() override;
    void close() override;

private:
    void newMedia();
    void fail(const QString &text);
    int stateNow() const;
    void scheduleUpdate();
    void update();
    void report(int state);
    void takeTitle();
    void setTitle(const QString &title);

    QMediaPlayer *m_player;
    QAudioOutput *m_audio;
    QVideoWidget &m_video;

    QString m_url;
    QString m_title;
    StreamTitleWatch *m_titleWatch;
    // The media reports titles itself; the watch is not needed.
    bool m_mediaTitles = false;
    // The watch starts with the first Playing of a station's address.
    bool m_titleWatchDue = false;
    int m_state = Undefined;
    int m_volume = 100;
    int m_playCount = 1;
    // Since the URL was last set:
    QString m_error;
    bool m_failed = false;
    bool m_buffered = false;    // the media has been buffered once
    bool m_endReported = false; // MediaEnded was told; Stopped comes next
    qint64 m_lastPosition = -1;
    bool m_progressing = false; // the position moved on lately
    QTimer m_stall;
    bool m_transitionDue = false;
    bool m_updatePending = false;
};
