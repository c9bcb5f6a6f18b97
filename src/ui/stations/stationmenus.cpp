#include "ui/stations/stationmenus.h"

#include "controls/flowlayout.h"
#include "controls/lynxgrid.h"
#include "controls/schemebutton.h"
#include "ui/stations/stationcommands.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>

namespace {

QMenu *newMenu(QWidget *parent)
{
    auto *menu = new QMenu(parent);
    menu->setToolTipsVisible(true);
    return menu;
}

} // namespace

StationMenus::StationMenus(QWidget &window, LynxGrid &grid, QMenuBar &menuBar, FlowLayout &strip,
                           StationCommands &commands, WindowActions actions)
    : QObject(&window), m_grid(grid), m_actions(std::move(actions)), m_rowMenu(newMenu(&window)),
      m_gridMenu(newMenu(&window))
{
    m_rowMenu->setObjectName(QStringLiteral("RowMenu"));
    m_gridMenu->setObjectName(QStringLiteral("GridMenu"));
    build(window, menuBar, strip, commands);
    m_grid.installEventFilter(this);
    m_grid.viewport()->installEventFilter(this);
}

SchemeButton *StationMenus::newButton(QWidget *parent, const char *name, const QString &text)
{
    auto *button = new SchemeButton(text, parent);
    button->setObjectName(QLatin1StringView(name));
    button->setAutoDefault(false);
    // Narrower than the style's dialog-button minimum, so that the window fits small screens.
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(text) + 24);
    return button;
}

// Every command of the window, in the order its menu lists it.
QList<StationMenus::Command> StationMenus::commands(StationCommands &c) const
{
    const WindowActions &w = m_actions;
    return {
        {"actAdd", tr("&Add..."), Menu::Station, QKeySequence(Qt::Key_Insert), GridMenu,
         tr("Add: add a new station in a form (Insert)."), [&c] { c.add(); }, "cmdAdd", tr("Add"), 205},
        {"actDirectory", tr("Direc&tory..."), Menu::Station, QKeySequence(Qt::CTRL | Qt::Key_D), GridMenu,
         tr("Directory: find stations in the open station directory and add them (Ctrl+D)."),
         [&c] { c.directory(); }, "cmdDirectory", tr("Directory"), 207},
        {"actPlay", tr("&Play"), Menu::Station, QKeySequence(Qt::Key_Enter), RowMenu | GridKey,
         tr("Play: play the selected station in the play bar (Enter)."), w.play},
        {"actListen",
         tr("&Listen"),
         Menu::Station,
         {},
         RowMenu,
         tr("Listen: play the selected station in a window of its own."),
         [&c] { c.listen(); },
         "cmdListen",
         tr("Listen"),
         120},
        {"actRecord",
         tr("&Record"),
         Menu::Station,
         {},
         RowMenu,
         tr("Record: record the selected station in a new recorder window."),
         [&c] { c.record(); },
         "cmdRecord",
         tr("Record"),
         110},
        {"actSchedule",
         tr("&Schedule..."),
         Menu::Station,
         {},
         RowMenu,
         tr("Schedule: plan a recording of the selected station."),
         [&c] { c.schedule(); }},
        {"actCopy",
         tr("&Copy"),
         Menu::Station,
         {},
         RowMenu,
         tr("Copy: copy the selected station. Left Shift: import a playlist."),
         [&c] { c.copy(); },
         "cmdCopy",
         tr("Copy"),
         210},
        {"actEdit", tr("&Edit..."), Menu::Station, QKeySequence(Qt::CTRL | Qt::Key_E), RowMenu,
         tr("Edit: change the selected station in a form (Ctrl+E)."), [&c] { c.edit(); }},
        {"actDelete", tr("&Delete..."), Menu::Station, QKeySequence(Qt::Key_Delete), RowMenu | GridKey,
         tr("Delete: delete the selected station, after a question (Delete). Right Shift: delete all "
            "stations."),
         [&c] { c.del(); }, "cmdDel", tr("Delete"), 220},
        {"actInfo",
         tr("&Information"),
         Menu::Station,
         {},
         RowMenu,
         tr("Info: open the station's information page. Left Shift: check all stations from the selected "
            "one. Left Ctrl: find the next station that plays. Left Shift or Left Ctrl again stops a "
            "check."),
         [&c] { c.info(); },
         "cmdInfo",
         tr("Info"),
         230},
        {"actFind", tr("&Find..."), Menu::List, QKeySequence(Qt::CTRL | Qt::Key_F), 0,
         tr("Find: type a part of a station's name or category (Ctrl+F)."), w.find},
        {"actLoadPls",
         tr("&Load PLS..."),
         Menu::List,
         {},
         GridMenu,
         tr("Load PLS: import every .pls playlist in the folder of the file you choose."),
         [&c] { c.loadPls(); },
         "cmdLoadPls",
         tr("Load PLS"),
         240},
        {"actCheckAll",
         tr("&Check all stations"),
         Menu::List,
         {},
         GridMenu,
         tr("Check all stations: play each station from the selected one and rate it by what it does. "
            "Choose again to stop."),
         [&c] { c.checkAll(); }},
        {"actFindNext",
         tr("Find the &next station that plays"),
         Menu::List,
         {},
         0,
         tr("Find the next station that plays, from the selected one on. Choose again to stop."),
         [&c] { c.findNextPlaying(); }},
        {"actLists",
         tr("&Station lists"),
         Menu::List,
         {},
         0,
         tr("Lists: import stations from a playlist file, or export the stations shown or selected to one."),
         {},
         "cmdLists",
         tr("Lists"),
         245},
        {"actImportStations",
         tr("&Import Stations..."),
         Menu::List,
         {},
         0,
         tr("Import: add the stations of an M3U, M3U8, PLS or XSPF file."),
         [&c] { c.importStations(); },
         nullptr,
         {},
         0,
         "actLists"},
        {"actExportStations",
         tr("&Export the Stations Shown..."),
         Menu::List,
         {},
         0,
         tr("Export: write the stations the list shows to an M3U8, PLS or XSPF file."),
         [&c] { c.exportStations(); },
         nullptr,
         {},
         0,
         "actLists"},
        {"actExportSelected",
         tr("Export the &Selected Stations..."),
         Menu::List,
         {},
         0,
         tr("Export selected: write the selected stations to an M3U8, PLS or XSPF file."),
         [&c] { c.exportSelectedStations(); },
         nullptr,
         {},
         0,
         "actLists"},
        {"actDeleteAll",
         tr("Delete &all stations..."),
         Menu::List,
         {},
         0,
         tr("Delete all stations, after a question."),
         [&c] { c.deleteAll(); }},
        {"actHistory", tr("&History..."), Menu::Recordings, QKeySequence(Qt::CTRL | Qt::Key_H), 0,
         tr("History: every song title heard or recorded, newest first, to search and export (Ctrl+H)."),
         w.history, "cmdHistory", tr("History"), 235},
        {"actReplay",
         tr("&Replay..."),
         Menu::Recordings,
         {},
         0,
         tr("Replay: play a recording in a listening window."),
         [&c] { c.replay(); },
         "cmdReplay",
         tr("Replay"),
         130},
        {"actTrim",
         tr("&Trim..."),
         Menu::Recordings,
         {},
         0,
         tr("Trim: open a recording in the MP3 trimming tool."),
         [&c] { c.trim(); },
         "cmdTrim",
         tr("Trim"),
         250},
        {"actSettings",
         tr("&Settings..."),
         Menu::Tools,
         {},
         0,
         tr("Settings: the command line of the MP3 trimming tool."),
         w.settings,
         "cmdSettings",
         tr("Settings"),
         310},
        {"actSkin",
         tr("S&kin..."),
         Menu::Tools,
         {},
         0,
         tr("Skin: choose the colour theme and the skin."),
         [&c] { c.skin(); },
         "cmdSkin",
         tr("Skin"),
         320},
        {"actGuide", tr("&User guide"), Menu::Help, QKeySequence(Qt::Key_F1), 0,
         tr("User guide: how to use Tunecatch, in your browser (F1)."), [&c] { c.userGuide(); }},
        {"actAbout",
         tr("&About"),
         Menu::Help,
         {},
         0,
         tr("About: the version and your data and recordings folders."),
         [&c] { c.about(); },
         "cmdAbout",
         tr("About"),
         330},
    };
}

void StationMenus::build(QWidget &window, QMenuBar &menuBar, FlowLayout &strip, StationCommands &commands)
{
    QMenu *menus[] = {menuBar.addMenu(tr("&Station")), menuBar.addMenu(tr("&List")),
                      menuBar.addMenu(tr("&Recordings")), menuBar.addMenu(tr("&Tools")),
                      menuBar.addMenu(tr("&Help"))};
    for (QMenu *menu : menus)
        menu->setToolTipsVisible(true);

    QWidget *stripWidget = strip.parentWidget();
    QList<std::pair<int, SchemeButton *>> buttons;
    for (const Command &command : this->commands(commands)) {
        auto *action = new QAction(command.text, &window);
        action->setObjectName(QLatin1StringView(command.name));
        action->setToolTip(command.tip);
        if (!command.key.isEmpty()) {
            QList<QKeySequence> keys{command.key};
            // Enter names the keypad's key; the main Enter key is Return to Qt.
            if (command.key == QKeySequence(Qt::Key_Enter))
                keys << QKeySequence(Qt::Key_Return);
            action->setShortcuts(keys);
        }
        if (command.places & GridKey) {
            action->setShortcutContext(Qt::WidgetShortcut);
            m_grid.addAction(action);
        } else {
            window.addAction(action);
        }
        if (command.run)
            connect(action, &QAction::triggered, this, command.run);
        else
            action->setMenu(newMenu(&window));
        if (command.under)
            window.findChild<QAction *>(QLatin1StringView(command.under))->menu()->addAction(action);
        else
            menus[int(command.menu)]->addAction(action);
        if (command.places & RowMenu)
            m_rowMenu->addAction(action);
        if (command.places & GridMenu)
            m_gridMenu->addAction(action);
        if (command.button) {
            SchemeButton *button = newButton(stripWidget, command.button, command.buttonText);
            button->setToolTip(command.tip);
            if (action->menu()) {
                button->setMenu(action->menu());
                button->setAccessibleName(QString(command.text).remove(u'&'));
            } else {
                connect(button, &QPushButton::clicked, action, &QAction::trigger);
            }
            buttons.append({command.order, button});
        }
    }
    std::sort(buttons.begin(), buttons.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
    int group = -1;
    for (const auto &[order, button] : buttons) {
        if (group >= 0 && order / 100 != group)
            strip.addItem(new QSpacerItem(14, 1, QSizePolicy::Fixed));
        group = order / 100;
        strip.addWidget(button);
    }
    // The window's main action stands out.
    stripWidget->findChild<SchemeButton *>(QStringLiteral("cmdRecord"))->setAccent(true);
}

bool StationMenus::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::ContextMenu && (watched == &m_grid || watched == m_grid.viewport())) {
        const auto *request = static_cast<QContextMenuEvent *>(event);
        const QPoint at =
            watched == &m_grid ? m_grid.viewport()->mapFrom(&m_grid, request->pos()) : request->pos();
        showContextMenu(at, request->reason() == QContextMenuEvent::Keyboard);
        return true;
    }
    return QObject::eventFilter(watched, event);
}

void StationMenus::showContextMenu(const QPoint &viewportPos, bool atCurrentRow)
{
    int row = -1;
    QPoint at = viewportPos;
    if (atCurrentRow) {
        row = m_grid.Row();
        if (row >= 0)
            at = QPoint(m_grid.ColLeft(m_actions.stationColumn()), m_grid.RowTop(row) + m_grid.RowHeight());
    } else {
        for (int candidate = 0; candidate < m_grid.ItemCount() && row < 0; ++candidate) {
            const int top = m_grid.RowTop(candidate);
            if (top != -1 && viewportPos.y() >= top && viewportPos.y() < top + m_grid.RowHeight())
                row = candidate;
        }
    }
    QMenu *menu = m_gridMenu;
    if (row >= 0) {
        // A right click makes its row current, as a left click does.
        if (m_grid.Row() != row)
            m_grid.GotoCell(row, m_grid.Col() >= 0 ? m_grid.Col() : m_actions.stationColumn());
        menu = m_rowMenu;
    }
    menu->popup(m_grid.viewport()->mapToGlobal(at));
}
