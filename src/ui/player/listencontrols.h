#pragma once

#include <QWidget>

class MediaPlayer;
class QLabel;
class QPushButton;
class QSlider;

// The listening window's compact player, for media without pictures: the
// station (or file), the current title when the media names one, Play,
// Pause and Stop, the volume, and for a file its position with a seek bar.
class ListenControls : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ListenControls)

public:
    ListenControls(MediaPlayer &player, QWidget *parent = nullptr);

    void setStation(const QString &name);

private:
    void showMedia();
    void showTitle(const QString &title);
    void showState(int state);
    void showPosition(qint64 milliseconds);

    MediaPlayer &m_player;
    QLabel *lblStation;
    QLabel *lblTitle;
    QPushButton *cmdPlay;
    QPushButton *cmdPause;
    QPushButton *cmdStop;
    QSlider *sldVolume;
    QSlider *sldPosition;
    QLabel *lblPosition;
};
