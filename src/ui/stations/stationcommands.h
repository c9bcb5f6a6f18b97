#pragma once

#include "catalogue/stationexchange.h"
#include "ui/stations/stationcheck.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

struct Appearance;
class Catalogue;
class FrmDirectory;
class FrmListen;
class LynxGrid;
class ModifierKeys;
class Prompt;
class QDialog;
class QTimer;
class QWidget;
class Shell;
class StationPlayer;
struct TrimTool;

// What the commands need of the station list window.
class StationListHost
{
public:
    virtual ~StationListHost() = default;

    virtual LynxGrid &grid() = 0;
    // Rebuilds the grid from the catalogue through the filters; edits of the
    // old rows are kept for the closing step.
    virtual void fillGrid() = 0;
    // Writes a grid row into the station record at index.
    virtual void writeBack(int row, int index) = 0;
    // Sets a grid row's cells from the station record at index.
    virtual void fillRow(int row, int index) = 0;
    // Writes every edited row back into its station now, so that a save holds it.
    virtual void commitEdits() = 0;
    // Drops the edits the list keeps for the closing step: their stations
    // have been saved, or are gone.
    virtual void forgetEdits() = 0;
    // A new listening window, not yet shown, that reports played stations to the list.
    virtual FrmListen *createListenWindow() = 0;
    // Takes the colour theme's colours again, after the theme changed.
    virtual void applyColors() = 0;
    // Offers the catalogue's categories again, after stations brought new ones.
    virtual void refreshCategories() = 0;
    // Refills the grid and makes the row of the station at index current,
    // clearing the filters when they would hide it.
    virtual void showStation(int index) = 0;
    // A category the catalogue may not know yet: the filter offers it too.
    virtual void addCategory(const QString &category) = 0;
};

// The main window's commands on the current station or the whole catalogue:
// record, listen, replay, copy, delete, information page and the station
// check, playlist import, trimming, the skin chooser, the about box, the
// web directory search, the station directory window, and station lists in
// and out.
class StationCommands : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationCommands)

public:
    // The outside world the commands reach.
    struct Services
    {
        Prompt &prompt;
        Shell &shell;
        ModifierKeys &keys;
        // A new recorder window, not yet shown; Record fills its controls by name.
        std::function<QWidget *()> newRecorderWindow;
        StationCheck::Timing checkTiming = {};
        // Runs a modal dialog and gives its result; empty means QDialog::exec.
        std::function<int(QDialog &)> runModal = {};
        // The path to write a file to, for a title and a type filter, or empty
        // when cancelled; empty means the file-save dialog.
        std::function<QString(const QString &title, const QString &filter)> chooseSaveFile = {};
        // How long the station form's Test waits for an answer, in milliseconds.
        int testLimit = 10000;
    };

    // What the commands say to the user.
    static QString recordNoStation();
    static QString listenNoStation();
    static QString editNoStation();
    static QString deleteQuestion(const QString &station);
    static QString deleteAllQuestion();
    static QString trimNotStarted(const QString &command);

    // player is the main window's own, which the station check drives.
    StationCommands(Catalogue &catalogue, Appearance &appearance, const TrimTool &trimTool, QString installFolder,
                    StationListHost &list, StationPlayer &player, Services services, QWidget *owner);

    // The listening window's title for a file: the part after the last "\"
    // or "/" (paths on this system use the latter).
    static QString fileTitle(const QString &path);

    void record();
    // A recorder window filled as by Record, with its Schedule dialog open.
    void schedule();
    void listen();
    void replay();
    // Left Shift held: playlist import.
    void copy();
    // Right Shift held: delete all stations.
    void del();
    // Left Shift: checks every station from the current one; left Ctrl: finds
    // the next station that plays; either, while a check runs, stops it.
    // A plain click opens the information page.
    void info();
    void loadPls();
    // The station form for a new station, appended to the catalogue.
    void add();
    // The station form for the current row's station.
    void edit();
    // The station check, started from a menu: every station from the current
    // one, or up to the next that plays. While a check runs, each stops it.
    void checkAll();
    void findNextPlaying();
    // The question, then every station goes.
    void deleteAll();
    void trim();
    void skin();
    void about();
    void searchWww(const QString &text, const QString &genre);
    // Opens the station directory window, or brings it to the front.
    void directory();
    // Adds the stations of an M3U, M3U8, PLS or XSPF file the user picks.
    void importStations();
    // Writes the stations the list shows (after its filters), or the
    // selected ones, to an M3U8, PLS or XSPF file the user picks.
    void exportStations();
    void exportSelectedStations();
    // Appends the stations whose stream address is new, then refills the
    // list with them selected.
    StationExchange::AddResult addStations(const QList<Station> &stations);
    // The user guide (the README that comes with the program) in the browser.
    void userGuide();

    // The list is going: ends a station check, and closes the recorder
    // windows Record opened, newest first, each completing its file. A Record
    // or Listen click whose window has not opened yet opens none.
    void unload();

private:
    void timerRecordTick();
    void timerListenTick();
    int runModal(QDialog &dialog) const;
    void copyStation();
    void deleteStation();
    void runCheck(StationCheck::Mode mode);
    void importPlaylist();
    void exportRows(bool selectedOnly);
    QString chooseSaveFile(const QString &title, const QString &filter) const;
    QString currentCell(int column) const;
    // The current row; with none, -1 after showing noStation.
    int selectedRow(const QString &noStation) const;

    Catalogue &m_catalogue;
    Appearance &m_appearance;
    const TrimTool &m_trimTool;
    const QString m_installFolder;
    StationListHost &m_list;
    StationPlayer &m_player;
    Services m_services;
    QWidget *m_owner;
    QTimer *m_TimerRecord;
    QTimer *m_TimerListen;
    // TimerListen's Tag: the address or file the tick opens.
    QString m_listenTag;
    // The grid row Listen plays; below 0 for a file chosen by Replay.
    int m_listenRow = -1;
    // The recorder window TimerRecord opens is to show its Schedule dialog.
    bool m_scheduleNext = false;
    StationCheck *m_check;
    QList<QPointer<QWidget>> m_recorders;
    QPointer<FrmDirectory> m_directory;
};
