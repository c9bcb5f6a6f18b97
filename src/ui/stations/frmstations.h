#pragma once

#include "ui/player/playerview.h"
#include "ui/stations/stationcommands.h"

#include "base/tracehook.h"

#include <QWidget>

#include <array>
#include <functional>

struct Appearance;
class Catalogue;
struct LaunchOptions;
struct PlayerTexts;
struct StationFilters;
struct TrimTool;
class FrmListen;
struct Station;
class LynxGrid;
class FlowLayout;
class MainPlayer;
class QBoxLayout;
class QComboBox;
class QLineEdit;
class QMenu;
class QMenuBar;
class StationColumns;
class StationMenus;
class StationPlayer;
class ucPlayBar;

// The main window: the station catalogue in a grid, four filters, a text
// search, in-place editing of the stations, and the commands on them.
class FrmStations : public QWidget, private StationListHost
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmStations)

public:
    // The grid's columns by their index; cells are reached through the grid's
    // ColPosition, because the user may drag the columns into another order.
    enum Column {
        ColPlay,
        ColStation,
        ColGenre,
        ColBit,
        ColType,
        ColCategory,
        ColRating,
        ColStreamUrl,
        ColSingle,
        ColLastDate,
        ColSign,
        ColInfoUrl,
        ColOutput,
        ColumnCount
    };

    // What the window works on and with.
    struct Parts
    {
        Catalogue &catalogue;
        StationFilters &filters;
        Appearance &appearance;
        const TrimTool &trimTool;
        const PlayerTexts &playerTexts;
        const LaunchOptions &launch;
        TraceHook trace;
        QString installFolder;
        // Runs the settings dialog over the window.
        std::function<void(QWidget *owner)> openSettings;
        // Shows the History window (the History button and Ctrl+H).
        std::function<void(QWidget *owner)> openHistory = {};
    };

    // players makes the media players of the window's own player and of its
    // listening windows.
    FrmStations(Parts parts, StationCommands::Services services, MediaPlayerFactory players,
                QWidget *parent = nullptr);

    // A new listening window, not yet shown, whose played stations reach stationPlayed.
    FrmListen *createListenWindow() override;
    // A listening window's news: kind 1 means the station of row started to
    // play on date, which becomes its LastDate.
    void stationPlayed(int kind, int row, const QString &date);
    StationPlayer &player() const { return *m_player; }
    // The menu of a row and the menu of the grid's empty area.
    QMenu &rowMenu() const;
    QMenu &gridMenu() const;

    // What the desktop's media controls reach: the player, its bar, and the
    // grid's rows as the stations before and after the current one.
    MainPlayer &mainPlayer() const { return *m_mainPlayer; }
    ucPlayBar &playBar() const { return *m_playBar; }
    // Whether a row lies step rows (1 the next, -1 the previous) from the current one.
    bool canStepStation(int step) const;
    // Makes that row current; unless the player is stopped, its station plays.
    void stepStation(int step);

signals:
    // The window has unloaded: edited cells are back in the catalogue and its
    // changed flag is set when any cell was changed. The closing step follows.
    void unloaded();
    // A listening window's station names the song now on (empty: none any more).
    void listeningSongChanged(const QString &station, const QString &title);
    // The current row or the number of rows changed: canStepStation may answer otherwise.
    void stationStepsChanged();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildControls();
    void connectCommands();
    int rowOf(int index) const;
    void createColumns();
    void setAccessibleNames();

    // StationListHost
    LynxGrid &grid() override { return *m_grid; }
    void fillGrid() override;
    void writeBack(int row, int index) override;
    void fillRow(int row, int index) override;
    void commitEdits() override;
    void forgetEdits() override;
    void applyColors() override;
    void refreshCategories() override;
    void showStation(int index) override;
    void addCategory(const QString &category) override;

    // Writes every row with a changed cell back into its station and clears
    // the marks; returns the changed cells.
    int sweepChangedCells();
    int pos(Column column) const;
    using Positions = std::array<int, ColumnCount>;
    Positions positions() const;
    void fillCells(int row, const Station &station, const Positions &at);

    void cmdFilterClick();
    void cmdSearchClick();
    void cmdSettingsClick();
    void gridRequestEdit(int row, int col, bool &cancel);
    void gridRequestUpdate(int row, int col, QString &value, bool &cancel);
    void gridCellUpdated(int row, int col);

    void buildPlayer();

    Parts m_parts;
    MediaPlayerFactory m_players;
    StationPlayer *m_player = nullptr;
    MainPlayer *m_mainPlayer = nullptr;
    StationCommands *m_commands = nullptr;
    bool m_unloaded = false;
    // Changed cells swept out of the grid before a refill: they count at
    // closing like the changed cells still in it.
    int m_sweptEdits = 0;

    LynxGrid *m_grid = nullptr;
    QComboBox *m_cboRating = nullptr;
    QComboBox *m_cmbGenre = nullptr;
    QComboBox *m_cmbCategory = nullptr;
    QComboBox *m_cmbType = nullptr;
    QComboBox *m_cmbRating = nullptr;
    QLineEdit *m_txtSearch = nullptr;
    QMenuBar *m_menuBar = nullptr;
    FlowLayout *m_commandStrip = nullptr;
    StationColumns *m_columns = nullptr;
    StationMenus *m_menus = nullptr;
    QBoxLayout *m_playBarSlot = nullptr;
    ucPlayBar *m_playBar = nullptr;
};
