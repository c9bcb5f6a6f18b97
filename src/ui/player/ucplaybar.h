#pragma once

#include "controls/themedcontrol.h"

#include <QWidget>

class QLabel;
class ucPictureButton;
class ucSlider;

// The play bar: a caption, play/pause, stop and mute buttons and a volume
// slider. It holds no player: it turns presses into key texts for its owner
// ("Play", "Pause", "Stop", "Mute", "NoMute") and shows the state it is told.
//
// Play and Pause share one place; the one not in use is parked far outside
// the bar. Stop is enabled while a player is active (playing or paused).
class ucPlayBar : public QWidget, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ucPlayBar)

public:
    static constexpr int ShownLeft = 120;
    static constexpr int ParkedLeft = -2000;
    static constexpr int VolumeMaximum = 100;

    explicit ucPlayBar(QWidget *parent = nullptr);

    QString Caption() const;
    void setCaption(const QString &caption);
    // "stop" or "play" in any letter case sets that look; other texts change
    // nothing. Raises no event.
    void SetState(const QString &state);
    // Presses the button of a key text ("Play", "Pause", "Stop") as a click
    // does, when that button is in its place and enabled; the desktop's media
    // controls act through this. Tells whether it was clicked.
    bool press(const QString &key);
    // The volume slider's value, 0 to VolumeMaximum; setting it reports Volume.
    int volume() const;
    void setVolume(int value);

    void setThemeColors(const ThemeColors &colors) override;

    QSize sizeHint() const override;

signals:
    void Click(const QString &key);
    void Volume(int value);

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showStopped();
    void showPlaying();
    void showPlayButton(bool play);

    QLabel *lbPlayBar;
    ucPictureButton *cmdDSPlay;
    ucPictureButton *cmdDSPause;
    ucPictureButton *cmdDSStop;
    ucPictureButton *cmdDSMute;
    ucSlider *ucSlider1;
};
