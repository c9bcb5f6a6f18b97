#pragma once

#include "app/appwindows.h"
#include "app/desktopshell.h"
#include "app/keystate.h"
#include "app/programparts.h"
#include "app/qtappwindows.h"
#include "app/startup.h"
#include "support/fakepowercontrol.h"
#include "support/scriptedplayer.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"
#include "ui/stations/frmstations.h"

#include <QStringList>

#include <memory>

class LynxGrid;

// The desktop's shell with the browser left out: addresses are only noted.
// Command lines start for real.
class BrowserlessShell : public DesktopShell
{
public:
    bool openDocument(const QString &address) override;
    QStringList opened;
};

// Start-up's windows side as the closing step needs it; ending the process is the one thing not done.
class QuietWindows : public AppWindows
{
public:
    void initCommonControls() override {}
    void loadMainWindow() override {}
    void showMainWindow() override {}
    void showRecorderWindow() override {}
    void processEvents() override {}
    void unloadAllWindows() override {}
    void endProcess() override { ended = true; }
    bool ended = false;
};

// The main window over a catalogue in a temporary profile, its questions,
// dialogs and browser answered by seams; closing it runs the real closing step.
class StationWindowTest : public ProfileTest
{
public:
    using Col = FrmStations::Column;
    // Five stations in the order the window shows them with no filter.
    static const QString catalogue5;
    static const QString allFive;
    void SetUp() override;
    void TearDown() override;
    // Writes the catalogue file (station lines with '|' between fields) and loads it.
    void writeCatalogue(const QString &stations);
    QString cataloguePath() const { return profile.dataFolder() + Startup::catalogueFileName; }
    // The catalogue file as text.
    QString catalogueText() const;
    // Opens the main window; its players are scripted unless factory makes them.
    void open(const MediaPlayerFactory &factory = {});
    // Makes the window the active one, so that its keys reach their commands.
    void activate();
    template <typename T = QWidget> T *child(const char *name) const
    {
        T *found = window->findChild<T *>(QLatin1StringView(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    // X key symbols of the modifier keys.
    static constexpr quint32 leftShiftKey = 0xffe1, rightShiftKey = 0xffe2, leftControlKey = 0xffe3;
    // A real click, with a modifier key held down as the platform reports it when heldKey is one.
    void click(const char *button, quint32 heldKey = 0);
    int pos(Col column) const;
    // A column's texts as shown, joined by commas.
    QString shown(Col column = Col::ColStation) const;
    void filter(const char *genre, const char *category, const char *type, const char *rating);
    void editText(int row, Col column, const QString &text);
    // Quick: a station that never answers costs a fifth of a second.
    StationCheck::Timing checkTiming{2, 101};
    // Plays the user at modal dialogs; empty runs them for real.
    std::function<int(QDialog &)> runModal;
    // What the History button and Ctrl+H run; empty opens nothing.
    std::function<void(QWidget *owner)> openHistory;
    // Plays the user at the file-save dialog: the path chosen, empty for cancel.
    std::function<QString(const QString &title, const QString &filter)> chooseSaveFile = [](auto &, auto &) {
        return QString();
    };
    // Station names of the recordings a recorder window was asked to schedule.
    QStringList scheduled;
    ScriptedPrompt prompt;
    QuietWindows windows;
    BrowserlessShell shell;
    KeyState keys;
    FakePowerControl power;
    std::unique_ptr<ProgramParts> state;
    std::unique_ptr<Startup> startup;
    QList<ScriptedPlayer *> players;
    std::unique_ptr<FrmStations> window;
    LynxGrid *grid = nullptr;
};
