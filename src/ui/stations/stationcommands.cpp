#include "ui/stations/stationcommands.h"

#include "base/apperror.h"
#include "base/apppaths.h"
#include "base/appinfo.h"
#include "base/modifierkeys.h"
#include "base/trimtool.h"
#include "catalogue/catalogue.h"
#include "skin/appearance.h"
#include "base/prompt.h"
#include "base/shell.h"
#include "controls/lynxgrid.h"
#include "ui/skin/skincommand.h"
#include "ui/stations/frmabout.h"
#include "ui/player/frmlisten.h"
#include "ui/stations/frmstations.h"
#include "directory/websearch.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include <utility>

namespace {

// The click has finished by the time the tick opens the window.
constexpr int TimerInterval = 10;

// A control of the recorder window by its name.
template <typename T> T &control(QWidget &window, const char *name)
{
    T *found = window.findChild<T *>(QLatin1StringView(name));
    if (!found)
        qFatal("The recorder window has no %s", name);
    return *found;
}

} // namespace

StationCommands::StationCommands(Catalogue &catalogue, Appearance &appearance, const TrimTool &trimTool,
                                 QString installFolder, StationListHost &list, StationPlayer &player,
                                 Services services, QWidget *owner)
    : QObject(owner), m_catalogue(catalogue), m_appearance(appearance), m_trimTool(trimTool),
      m_installFolder(std::move(installFolder)), m_list(list), m_services(std::move(services)), m_owner(owner),
      TimerRecord(new QTimer(this)), TimerListen(new QTimer(this)),
      m_check(new StationCheck(catalogue, list, player, m_services.checkTiming, this))
{
    const std::pair<QTimer *, const char *> timers[] = {{TimerRecord, "TimerRecord"},
                                                        {TimerListen, "TimerListen"}};
    for (const auto &[timer, name] : timers) {
        timer->setObjectName(QLatin1StringView(name));
        timer->setSingleShot(true);
        timer->setInterval(TimerInterval);
    }
    connect(TimerRecord, &QTimer::timeout, this, &StationCommands::TimerRecord_Timer);
    connect(TimerListen, &QTimer::timeout, this, &StationCommands::TimerListen_Timer);
}

QString StationCommands::FileTitle(const QString &path)
{
    const qsizetype cut = qMax(path.lastIndexOf(u'\\'), path.lastIndexOf(u'/'));
    return path.mid(cut + 1);
}

int StationCommands::runModal(QDialog &dialog) const
{
    return m_services.runModal ? m_services.runModal(dialog) : dialog.exec();
}

QString StationCommands::currentCell(int column) const
{
    const LynxGrid &grid = m_list.Grid();
    return grid.CellText(grid.Row(), grid.ColPosition(column));
}

int StationCommands::selectedRow(const QString &noStation) const
{
    const int row = m_list.Grid().Row();
    if (row < 0)
        m_services.prompt.message(noStation, AppInfo::title, Prompt::Icon::Information);
    return row;
}

void StationCommands::Record()
{
    const int row = selectedRow(RecordNoStation);
    if (row < 0)
        return;
    m_list.WriteBack(row, m_list.Grid().ItemData(row));
    TimerRecord->start();
}

void StationCommands::TimerRecord_Timer()
{
    TimerRecord->stop();
    const LynxGrid &grid = m_list.Grid();
    const int row = grid.Row();
    const QString address = row >= 0 ? currentCell(FrmStations::ColStreamUrl) : QString();
    if (address.isEmpty())
        return;

    // Independent of the list: several recordings may run at once.
    QWidget *window = m_services.newRecorderWindow();
    control<QLineEdit>(*window, "txtSave").setText(currentCell(FrmStations::ColOutput));
    control<QLabel>(*window, "LblStation").setText(currentCell(FrmStations::ColStation));
    control<QLineEdit>(*window, "txtStream").setText(address);
    if (grid.CellChecked(row, grid.ColPosition(FrmStations::ColSingle)))
        control<QCheckBox>(*window, "chkSingleSong").setChecked(true);
    m_recorders.removeIf([](const QPointer<QWidget> &open) { return open.isNull(); });
    m_recorders.append(window);
    window->show();
}

void StationCommands::Listen()
{
    const int row = selectedRow(ListenNoStation);
    if (row < 0)
        return;
    const int index = m_list.Grid().ItemData(row);
    if (index < 1)
        return;
    m_list.WriteBack(row, index);
    m_listenTag = currentCell(FrmStations::ColStreamUrl);
    m_listenRow = row;
    TimerListen->start();
}

void StationCommands::Replay()
{
    const QString path = m_services.prompt.chooseOpenFile(tr("Replay a Recording"), AppPaths::recordingsFolder(),
                                                       RecordingFilter);
    if (path.isEmpty())
        return;
    m_listenTag = path;
    TimerListen->start();
}

void StationCommands::TimerListen_Timer()
{
    TimerListen->stop();
    if (m_listenTag.isEmpty())
        return;
    FrmListen *window = m_list.CreateListenWindow();
    window->ListenRow = m_listenRow;
    window->ListenUrl = m_listenTag;
    if (m_listenRow < 0) {
        window->ListenTitle = FileTitle(m_listenTag);
    } else {
        const LynxGrid &grid = m_list.Grid();
        window->ListenTitle = grid.CellText(m_listenRow, grid.ColPosition(FrmStations::ColStation));
    }
    window->show();
    window->Play();
    m_listenRow = -1;
}

void StationCommands::Unload()
{
    m_check->Abort();
    // A click still waiting for its tick opens nothing once the list is gone.
    TimerRecord->stop();
    TimerListen->stop();
    const QList<QPointer<QWidget>> opened = std::exchange(m_recorders, {});
    for (auto window = opened.crbegin(); window != opened.crend(); ++window) {
        if (*window)
            (*window)->close();
    }
}

void StationCommands::Copy()
{
    if (m_services.keys.isDown(ModifierKeys::LeftShift))
        ImportPlaylist();
    else
        CopyStation();
}

void StationCommands::CopyStation()
{
    LynxGrid &grid = m_list.Grid();
    const int from = grid.Row();
    if (from < 0)
        return;
    grid.SetRedraw(false);
    const int index = m_catalogue.append(Station());
    const int row = grid.AddItem();
    grid.SetItemData(row, index);
    m_list.WriteBack(from, index);
    m_list.FillRow(row, index);
    grid.GotoCell(row, 0);
    m_catalogue.dirty = true;
    grid.SetRedraw(true);
}

void StationCommands::Delete()
{
    if (m_services.keys.isDown(ModifierKeys::RightShift))
        DeleteAll();
    else
        DeleteStation();
}

void StationCommands::DeleteStation()
{
    LynxGrid &grid = m_list.Grid();
    const int row = grid.Row();
    const int index = grid.ItemData(row);
    if (row < 0 || index < 1 || index > m_catalogue.stationCount())
        return;
    Station &station = m_catalogue.at(index);
    if (!m_services.prompt.askYesNo(DeleteQuestion + station.Name, AppInfo::title, Prompt::Icon::Warning))
        return;
    // The record stays in the array; the catalogue writer leaves it out.
    station.Deleted = true;
    grid.RemoveItem(row);
    grid.RefreshView();
    m_catalogue.dirty = true;
}

void StationCommands::DeleteAll()
{
    if (!m_services.prompt.askYesNo(DeleteAllQuestion, AppInfo::title, Prompt::Icon::Warning))
        return;
    m_catalogue.removeAll();
    // The emptied list marks nothing changed on purpose, and edits of the
    // stations just removed must not mark it either: closing then leaves the
    // file as it was, unless another change was made.
    m_list.ForgetEdits();
    m_list.FillGrid();
}

void StationCommands::Info()
{
    if (m_check->Running()) {
        m_check->Stop();
        return;
    }
    if (m_services.keys.isDown(ModifierKeys::LeftShift)) {
        m_check->Start(StationCheck::Mode::CheckAll);
        return;
    }
    if (m_services.keys.isDown(ModifierKeys::LeftControl)) {
        m_check->Start(StationCheck::Mode::FindNext);
        return;
    }
    const QString address = currentCell(FrmStations::ColInfoUrl);
    if (address.size() > 1)
        m_services.shell.openDocument(address);
}

void StationCommands::LoadPls()
{
    ImportPlaylist();
}

void StationCommands::ImportPlaylist()
{
    const QString path = m_services.prompt.chooseOpenFile(tr("Load PLS"), QString(), PlaylistFilter);
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    // The import saves and reloads the catalogue, which renumbers it: every
    // edit goes into the records first, and the grid's rows are dropped after.
    m_list.CommitEdits();
    try {
        m_catalogue.importFolder(file.absolutePath(), file.fileName(), true, m_services.prompt,
                                       AppInfo::title);
        m_list.ForgetEdits();
    } catch (const AppError &e) {
        m_services.prompt.message(ImportNotSaved + e.description(), AppInfo::title, Prompt::Icon::Critical);
    }
    QCoreApplication::processEvents();
    m_list.FillGrid();
}

void StationCommands::Trim()
{
    const QString path =
        m_services.prompt.chooseOpenFile(tr("Trim a Recording"), AppPaths::recordingsFolder(), RecordingFilter);
    if (path.isEmpty())
        return;
    const QString quoted = u'"' + path + u'"';
    QString command = m_trimTool.command;
    command.replace(QStringLiteral("%APP%"), m_installFolder);
    command.replace(QStringLiteral("%MP3FILE%"), quoted);
    if (!m_services.shell.startCommand(command))
        m_services.prompt.message(TrimNotStarted.arg(command), AppInfo::title, Prompt::Icon::Warning);
}

void StationCommands::Skin()
{
    const auto redraw = [this] { m_list.ApplyColors(); };
    const auto run = [this](QDialog &dialog) { return runModal(dialog); };
    SkinCommand(m_appearance.skin, m_appearance.theme).Run(m_owner, redraw, run);
}

void StationCommands::About()
{
    frmAbout dialog(m_services.shell, m_owner);
    runModal(dialog);
}

void StationCommands::SearchWww(const QString &text, const QString &genre)
{
    const QString address = WebSearch::searchAddress(WebSearch::directoryHost(), text, genre);
    if (!address.isEmpty())
        m_services.shell.openDocument(address);
}
