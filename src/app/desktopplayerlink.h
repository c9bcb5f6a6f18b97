#pragma once

#include <QObject>

class FrmStations;
class PlayerRemote;

// Ties what the desktop sees of the main window's player (a PlayerRemote) to
// the window: the play state, the station and its song, the play bar's
// volume slider and whether the grid has a row before or after the current
// one. The desktop's requests are carried out as the window's own controls
// would: Play, Pause and Stop press the play bar's buttons, a volume moves
// its slider, Next and Previous step through the grid's rows, Raise shows the
// window. Either side may go first: the link works only while both are there.
class DesktopPlayerLink : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DesktopPlayerLink)

public:
    DesktopPlayerLink(FrmStations &window, PlayerRemote &remote, QObject *parent = nullptr);

private:
    void followPlayState(int state);
    void followRows();
    void raiseWindow();

    FrmStations &m_window;
    PlayerRemote &m_remote;
};
