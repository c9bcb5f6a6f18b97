#include "ui/stations/stationcommands.h"

#include "base/apperror.h"
#include "base/apppaths.h"
#include "base/appinfo.h"
#include "base/modifierkeys.h"
#include "base/settingsstore.h"
#include "base/trimtool.h"
#include "catalogue/catalogue.h"
#include "catalogue/stationlistfile.h"
#include "skin/appearance.h"
#include "base/prompt.h"
#include "base/shell.h"
#include "controls/lynxgrid.h"
#include "ui/directory/frmdirectory.h"
#include "ui/skin/skincommand.h"
#include "ui/stations/frmabout.h"
#include "ui/player/frmlisten.h"
#include "ui/stations/frmstations.h"
#include "ui/stations/stationform.h"
#include "ui/stations/userguide.h"
#include "directory/websearch.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QTimer>
#include <QUrl>

#include <utility>

namespace {

// The click has finished by the time the tick opens the window.
constexpr int timerInterval = 10;

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
      m_installFolder(std::move(installFolder)), m_list(list), m_player(player),
      m_services(std::move(services)), m_owner(owner), m_TimerRecord(new QTimer(this)),
      m_TimerListen(new QTimer(this)),
      m_check(new StationCheck(catalogue, list, player, m_services.checkTiming, this))
{
    const std::pair<QTimer *, const char *> timers[] = {{m_TimerRecord, "TimerRecord"},
                                                        {m_TimerListen, "TimerListen"}};
    for (const auto &[timer, name] : timers) {
        timer->setObjectName(QLatin1StringView(name));
        timer->setSingleShot(true);
        timer->setInterval(timerInterval);
    }
    connect(m_TimerRecord, &QTimer::timeout, this, &StationCommands::timerRecordTick);
    connect(m_TimerListen, &QTimer::timeout, this, &StationCommands::timerListenTick);
}

QString StationCommands::fileTitle(const QString &path)
{
    const qsizetype cut = qMax(path.lastIndexOf(u'\\'), path.lastIndexOf(u'/'));
    return path.mid(cut + 1);
}

QString StationCommands::recordNoStation()
{
    return tr("Select a Station in the list below to Record.");
}

QString StationCommands::listenNoStation()
{
    return tr("Select a Station in the list below to Listen.");
}

QString StationCommands::editNoStation()
{
    return tr("Select a Station in the list below to Edit.");
}

QString StationCommands::deleteQuestion(const QString &station)
{
    return tr("Do you wish to delete the Station: %1").arg(station);
}

QString StationCommands::deleteAllQuestion()
{
    return tr("Do you want to Delete ALL stations?");
}

QString StationCommands::trimNotStarted(const QString &command)
{
    return tr("The MP3 trimming tool could not be started:\n%1\n\nIts command line is set under Settings.")
        .arg(command);
}

int StationCommands::runModal(QDialog &dialog) const
{
    return m_services.runModal ? m_services.runModal(dialog) : dialog.exec();
}

QString StationCommands::currentCell(int column) const
{
    const LynxGrid &grid = m_list.grid();
    return grid.CellText(grid.Row(), grid.ColPosition(column));
}

int StationCommands::selectedRow(const QString &noStation) const
{
    const int row = m_list.grid().Row();
    if (row < 0)
        m_services.prompt.message(noStation, AppInfo::title, Prompt::Icon::Information);
    return row;
}

void StationCommands::record()
{
    const int row = selectedRow(recordNoStation());
    if (row < 0)
        return;
    m_list.writeBack(row, m_list.grid().ItemData(row));
    m_scheduleNext = false;
    m_TimerRecord->start();
}

void StationCommands::schedule()
{
    record();
    m_scheduleNext = m_TimerRecord->isActive();
}

void StationCommands::timerRecordTick()
{
    m_TimerRecord->stop();
    const LynxGrid &grid = m_list.grid();
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
    if (std::exchange(m_scheduleNext, false))
        control<QPushButton>(*window, "cmdSchedule").click();
}

void StationCommands::listen()
{
    const int row = selectedRow(listenNoStation());
    if (row < 0)
        return;
    const int index = m_list.grid().ItemData(row);
    if (index < 1)
        return;
    m_list.writeBack(row, index);
    m_listenTag = currentCell(FrmStations::ColStreamUrl);
    m_listenRow = row;
    m_TimerListen->start();
}

void StationCommands::replay()
{
    const QString path = m_services.prompt.chooseOpenFile(
        tr("Replay a Recording"), AppPaths::recordingsFolder(), tr("MP3 files (*.mp3);;All files (*)"));
    if (path.isEmpty())
        return;
    m_listenTag = path;
    m_TimerListen->start();
}

void StationCommands::timerListenTick()
{
    m_TimerListen->stop();
    if (m_listenTag.isEmpty())
        return;
    FrmListen *window = m_list.createListenWindow();
    window->ListenRow = m_listenRow;
    window->ListenUrl = m_listenTag;
    if (m_listenRow < 0) {
        window->ListenTitle = fileTitle(m_listenTag);
    } else {
        const LynxGrid &grid = m_list.grid();
        window->ListenTitle = grid.CellText(m_listenRow, grid.ColPosition(FrmStations::ColStation));
    }
    window->show();
    window->Play();
    m_listenRow = -1;
}

void StationCommands::unload()
{
    m_check->abort();
    // A click still waiting for its tick opens nothing once the list is gone.
    m_TimerRecord->stop();
    m_TimerListen->stop();
    if (m_directory)
        m_directory->close();
    const QList<QPointer<QWidget>> opened = std::exchange(m_recorders, {});
    for (auto window = opened.crbegin(); window != opened.crend(); ++window) {
        if (*window)
            (*window)->close();
    }
}

void StationCommands::copy()
{
    if (m_services.keys.isDown(ModifierKeys::LeftShift))
        importPlaylist();
    else
        copyStation();
}

void StationCommands::copyStation()
{
    LynxGrid &grid = m_list.grid();
    const int from = grid.Row();
    if (from < 0)
        return;
    grid.setRedraw(false);
    const int index = m_catalogue.append(Station());
    const int row = grid.AddItem();
    grid.setItemData(row, index);
    m_list.writeBack(from, index);
    m_list.fillRow(row, index);
    grid.GotoCell(row, 0);
    m_catalogue.dirty = true;
    grid.setRedraw(true);
}

void StationCommands::del()
{
    if (m_services.keys.isDown(ModifierKeys::RightShift))
        deleteAll();
    else
        deleteStation();
}

void StationCommands::deleteStation()
{
    LynxGrid &grid = m_list.grid();
    const int row = grid.Row();
    const int index = grid.ItemData(row);
    if (row < 0 || index < 1 || index > m_catalogue.stationCount())
        return;
    Station &station = m_catalogue.at(index);
    if (!m_services.prompt.askYesNo(deleteQuestion(station.Name), AppInfo::title, Prompt::Icon::Warning,
                                    Prompt::Answer::No))
        return;
    // The record stays in the array; the catalogue writer leaves it out.
    station.Deleted = true;
    grid.RemoveItem(row);
    grid.RefreshView();
    m_catalogue.dirty = true;
}

void StationCommands::deleteAll()
{
    if (!m_services.prompt.askYesNo(deleteAllQuestion(), AppInfo::title, Prompt::Icon::Warning,
                                    Prompt::Answer::No))
        return;
    m_catalogue.removeAll();
    // The emptied list marks nothing changed on purpose, and edits of the
    // stations just removed must not mark it either: closing then leaves the
    // file as it was, unless another change was made.
    m_list.forgetEdits();
    m_list.fillGrid();
}

void StationCommands::runCheck(StationCheck::Mode mode)
{
    if (m_check->running())
        m_check->stop();
    else
        m_check->start(mode);
}

void StationCommands::checkAll()
{
    runCheck(StationCheck::Mode::CheckAll);
}

void StationCommands::findNextPlaying()
{
    runCheck(StationCheck::Mode::FindNext);
}

void StationCommands::info()
{
    // Only the check's own variants stop a running check; a plain click opens the page.
    const bool checkAll = m_services.keys.isDown(ModifierKeys::LeftShift);
    if (checkAll || m_services.keys.isDown(ModifierKeys::LeftControl)) {
        if (m_check->running())
            m_check->stop();
        else
            m_check->start(checkAll ? StationCheck::Mode::CheckAll : StationCheck::Mode::FindNext);
        return;
    }
    const QString address = currentCell(FrmStations::ColInfoUrl);
    if (address.size() > 1)
        m_services.shell.openDocument(address);
}

void StationCommands::loadPls()
{
    importPlaylist();
}

void StationCommands::importPlaylist()
{
    const QString path =
        m_services.prompt.chooseOpenFile(tr("Load PLS"), QString(), tr("Playlists (*.pls);;All files (*)"));
    if (path.isEmpty())
        return;
    const QFileInfo file(path);
    // The import saves and reloads the catalogue, which renumbers it: every
    // edit goes into the records first, and the grid's rows are dropped after.
    m_list.commitEdits();
    try {
        m_catalogue.importFolder(file.absolutePath(), file.fileName(), true, m_services.prompt,
                                       AppInfo::title);
        m_list.forgetEdits();
    } catch (const AppError &e) {
        m_services.prompt.message(tr("The station list could not be saved: %1").arg(e.description()),
                                  AppInfo::title, Prompt::Icon::Critical);
    }
    QCoreApplication::processEvents();
    m_list.fillGrid();
}

void StationCommands::add()
{
    StationForm form(StationForm::Purpose::Add, Station::newStation(), m_catalogue.separator,
                     m_catalogue.categories.items(), m_owner);
    form.setTestLimit(m_services.testLimit);
    if (runModal(form) != QDialog::Accepted)
        return;
    const Station station = form.station();
    m_list.addCategory(station.Category);
    const int index = m_catalogue.append(station);
    m_catalogue.dirty = true;
    m_list.showStation(index);
}

void StationCommands::edit()
{
    const int row = selectedRow(editNoStation());
    if (row < 0)
        return;
    const int index = m_list.grid().ItemData(row);
    if (index < 1 || index > m_catalogue.stationCount())
        return;
    // The form starts from the row as the grid shows it.
    m_list.writeBack(row, index);
    StationForm form(StationForm::Purpose::Edit, m_catalogue.at(index), m_catalogue.separator,
                     m_catalogue.categories.items(), m_owner);
    form.setTestLimit(m_services.testLimit);
    if (runModal(form) != QDialog::Accepted)
        return;
    m_catalogue.at(index) = form.station();
    m_list.addCategory(form.station().Category);
    m_catalogue.dirty = true;
    m_list.fillRow(row, index);
}

void StationCommands::trim()
{
    const QString path = m_services.prompt.chooseOpenFile(
        tr("Trim a Recording"), AppPaths::recordingsFolder(), tr("MP3 files (*.mp3);;All files (*)"));
    if (path.isEmpty())
        return;
    const QString quoted = u'"' + path + u'"';
    QString command = m_trimTool.command;
    command.replace(QStringLiteral("%APP%"), m_installFolder);
    command.replace(QStringLiteral("%MP3FILE%"), quoted);
    if (!m_services.shell.startCommand(command))
        m_services.prompt.message(trimNotStarted(command), AppInfo::title, Prompt::Icon::Warning);
}

void StationCommands::skin()
{
    const auto redraw = [this] { m_list.applyColors(); };
    const auto run = [this](QDialog &dialog) { return runModal(dialog); };
    SkinCommand(m_appearance.skin, m_appearance.theme).run(m_owner, redraw, run);
}

void StationCommands::about()
{
    frmAbout dialog(m_services.shell, m_owner);
    runModal(dialog);
}

void StationCommands::searchWww(const QString &text, const QString &genre)
{
    const QString address = WebSearch::searchAddress(WebSearch::directoryHost(), text, genre);
    if (!address.isEmpty())
        m_services.shell.openDocument(address);
}

void StationCommands::directory()
{
    if (!m_directory) {
        m_directory = new FrmDirectory(
            {
                .player = m_player,
                .add = [this](const QList<Station> &stations) { return addStations(stations); },
                .categories = m_catalogue.categories.items(),
                .server = SettingsStore::getSetting(SettingsStore::DirectoryServer),
            },
            m_owner);
        m_directory->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_directory->show();
    m_directory->raise();
    m_directory->activateWindow();
}

StationExchange::AddResult StationCommands::addStations(const QList<Station> &stations)
{
    const StationExchange::AddResult result = StationExchange::addNew(m_catalogue, stations);
    if (result.added.isEmpty())
        return result;
    m_list.refreshCategories();
    m_list.fillGrid();
    // The stations added are selected, the first of them current and in view.
    LynxGrid &grid = m_list.grid();
    const QSet<int> added(result.added.cbegin(), result.added.cend());
    bool first = true;
    grid.setRedraw(false);
    for (int row = 0; row < grid.ItemCount(); ++row) {
        if (!added.contains(grid.ItemData(row)))
            continue;
        if (first)
            grid.GotoCell(row, grid.ColPosition(FrmStations::ColStation));
        else
            grid.setItemSelected(row, true);
        first = false;
    }
    grid.setRedraw(true);
    return result;
}

void StationCommands::importStations()
{
    const QString path = m_services.prompt.chooseOpenFile(
        tr("Import Stations"), QString(), tr("Station lists (*.m3u *.m3u8 *.pls *.xspf);;All files (*)"));
    if (path.isEmpty())
        return;
    const StationListFile::ReadResult read = StationListFile::readFile(path);
    if (!read.error.isEmpty()) {
        m_services.prompt.message(read.error, AppInfo::title, Prompt::Icon::Warning);
        return;
    }
    // The stations of one list are kept together under its name.
    const QString category = QFileInfo(path).completeBaseName();
    QList<Station> stations;
    stations.reserve(read.entries.size());
    for (const StationListEntry &entry : read.entries)
        stations.append(StationExchange::fromListEntry(entry, category));
    StationExchange::AddResult result = addStations(stations);
    result.refused += read.refused;
    m_services.prompt.message(StationExchange::summary(result), AppInfo::title, Prompt::Icon::Information);
}

void StationCommands::exportStations()
{
    exportRows(false);
}

void StationCommands::exportSelectedStations()
{
    exportRows(true);
}

void StationCommands::exportRows(bool selectedOnly)
{
    const LynxGrid &grid = m_list.grid();
    QList<Station> stations;
    for (int row = 0; row < grid.ItemCount(); ++row) {
        if (selectedOnly && !grid.ItemSelected(row))
            continue;
        const int index = grid.ItemData(row);
        // A deleted station the list still shows is gone from the catalogue's file.
        if (index >= 1 && index <= m_catalogue.stationCount() && !m_catalogue.at(index).Deleted)
            stations.append(m_catalogue.at(index));
    }
    if (stations.isEmpty()) {
        m_services.prompt.message(selectedOnly ? tr("Select the stations to export in the list first.")
                                               : tr("The list shows no stations to export."),
                                  AppInfo::title, Prompt::Icon::Information);
        return;
    }
    const QString path =
        chooseSaveFile(selectedOnly ? tr("Export the Selected Stations") : tr("Export the Stations Shown"),
                       tr("M3U8 playlists (*.m3u8);;PLS playlists (*.pls);;XSPF playlists (*.xspf)"));
    if (path.isEmpty())
        return;
    const QString error = StationListFile::writeFile(path, StationListFile::formatForPath(path),
                                                     StationExchange::toListEntries(stations));
    if (!error.isEmpty())
        m_services.prompt.message(error, AppInfo::title, Prompt::Icon::Critical);
}

QString StationCommands::chooseSaveFile(const QString &title, const QString &filter) const
{
    if (m_services.chooseSaveFile)
        return m_services.chooseSaveFile(title, filter);
    QString chosenFilter;
    QString path = QFileDialog::getSaveFileName(m_owner, title, QString(), filter, &chosenFilter);
    // A name typed without a suffix takes the one of the type chosen: "(*.pls)" gives ".pls".
    if (!path.isEmpty() && QFileInfo(path).suffix().isEmpty()) {
        const qsizetype star = chosenFilter.indexOf(u"*.");
        if (star >= 0)
            path += chosenFilter.mid(star + 1).section(u')', 0, 0);
    }
    return path;
}

void StationCommands::userGuide()
{
    const QString page = UserGuide::page(m_installFolder, AppPaths::dataFolder());
    if (page.isEmpty()) {
        m_services.prompt.message(tr("The user guide could not be shown: %1 is missing from %2.")
                                      .arg(UserGuide::readmeFile, m_installFolder),
                                  AppInfo::title, Prompt::Icon::Warning);
        return;
    }
    m_services.shell.openDocument(QUrl::fromLocalFile(page).toString());
}
