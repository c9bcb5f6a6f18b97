#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <QString>

#include <functional>

class FlowLayout;
class LynxGrid;
class QMenu;
class QMenuBar;
class QPoint;
class QWidget;
class SchemeButton;
class StationCommands;

// The main window's commands, each one action reached from the menu bar, the
// grid's context menus, its key and its button in the command strip, all with
// the same tool tip. A command is added to the table once; the rest follows.
class StationMenus : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationMenus)

public:
    // The window's own parts of some commands.
    struct WindowActions
    {
        std::function<void()> play;     // play the current row in the play bar
        std::function<void()> find;     // the focus to the search box
        std::function<void()> settings; // the settings dialog
        std::function<void()> history;  // the History window
        // The grid position of the Station column, where the menu key opens a row's menu.
        std::function<int()> stationColumn;
    };

    // Builds the menus into menuBar and the buttons into strip; window takes
    // the actions whose keys work anywhere in it.
    StationMenus(QWidget &window, LynxGrid &grid, QMenuBar &menuBar, FlowLayout &strip,
                 StationCommands &commands, WindowActions actions);

    // A button as the window's strips show it.
    static SchemeButton *newButton(QWidget *parent, const char *name, const QString &text);

    QMenu &rowMenu() const { return *m_rowMenu; }
    QMenu &gridMenu() const { return *m_gridMenu; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Menu
    {
        Station,
        List,
        Recordings,
        Tools,
        Help
    };
    enum Place
    {
        RowMenu = 1,  // the menu of a row
        GridMenu = 2, // the menu of the grid's empty area
        GridKey = 4,  // the key works while the grid has the focus (elsewhere it is the field's)
    };
    struct Command
    {
        const char *name; // the action's objectName
        QString text;     // in menus
        Menu menu;
        QKeySequence key;
        int places;
        // What the command does and what a modifier key held at the click
        // does instead; the action's and the button's tool tip.
        QString tip;
        std::function<void()> run;
        const char *button = nullptr; // the command strip's button, if any
        QString buttonText = {};
        // The button's place in the strip; a new hundred begins a new group.
        int order = 0;
        // The command (earlier in the table) whose submenu lists this one
        // instead of its menu. A command that runs nothing holds such a
        // submenu, and its button drops it down.
        const char *under = nullptr;
    };

    QList<Command> commands(StationCommands &c) const;
    void build(QWidget &window, QMenuBar &menuBar, FlowLayout &strip, StationCommands &commands);
    // The grid's context menu at a point of its viewport, or at the current row.
    void showContextMenu(const QPoint &viewportPos, bool atCurrentRow);

    LynxGrid &m_grid;
    WindowActions m_actions;
    QMenu *m_rowMenu;
    QMenu *m_gridMenu;
};
