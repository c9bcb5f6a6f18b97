#pragma once

#include "app/appwindows.h"
#include "app/desktopparts.h"
#include "app/desktopshell.h"
#include "app/keystate.h"
#include "app/logindpowercontrol.h"
#include "recorder/launchreport.h"
#include "ui/stations/frmstations.h"

#include <QList>
#include <QPointer>
#include <QWidget>

#include <memory>

class FrmHistory;
struct ProgramParts;
class FrmTC;
class Startup;

// What the station list window gets of the program's parts.
FrmStations::Parts stationWindowParts(ProgramParts &parts);

// The composition root: builds the program's windows from its parts and
// shows them as start-up asks. Every window it creates ends
// the program through the closing procedure when it is closed. It owns the
// platform parts the windows work with: power control, the desktop shell,
// the state of the modifier keys, and the desktop's parts (the history, the
// media player on the session bus, song notifications).
class QtAppWindows : public AppWindows
{
public:
    explicit QtAppWindows(ProgramParts &parts);

    // The closing procedure that the windows run when they unload.
    void setStartup(Startup *startup) { m_startup = startup; }

    void initCommonControls() override;
    void loadMainWindow() override;
    void showMainWindow() override;
    void showRecorderWindow() override;
    void processEvents() override;
    void unloadAllWindows() override;
    void endProcess() override;

private:
    QWidget *track(QWidget *window);
    FrmTC *newRecorderWindow();
    // Made and opened with the first window.
    DesktopParts &desktop();
    void tell(const QString &message);
    void showHistoryWindow(QWidget *owner);

    ProgramParts &m_parts;
    Startup *m_startup = nullptr;
    LogindPowerControl m_power;
    DesktopShell m_shell;
    KeyState m_keys;
    // A launched recording's status lines and exit status.
    LaunchReport m_launchReport{&LaunchReport::toStandardError};
    QPointer<QWidget> m_mainWindow;
    QList<QPointer<QWidget>> m_loaded;
    std::unique_ptr<DesktopParts> m_desktop;
    // Told once the main window shows.
    QString m_desktopMessage;
    QPointer<FrmHistory> m_historyWindow;
};
