#include "ui/stations/frmstations.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "base/launchoptions.h"
#include "catalogue/catalogue.h"
#include "catalogue/stationfilters.h"
#include "skin/appearance.h"
#include "base/conversions.h"
#include "base/settingsstore.h"
#include "controls/flowlayout.h"
#include "controls/lynxgrid.h"
#include "controls/schemebutton.h"
#include "ui/player/frmlisten.h"
#include "player/mainplayer.h"
#include "player/mediaplayer.h"
#include "ui/skin/themepalette.h"
#include "ui/player/ucplaybar.h"
#include "ui/stations/stationcolumns.h"
#include "ui/stations/stationfilterbar.h"
#include "ui/stations/stationmenus.h"
#include "ui/windowplacement.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QGuiApplication>
#include <QLineEdit>
#include <QMenuBar>
#include <QPainter>
#include <QVBoxLayout>

namespace {

const QString playKey = QStringLiteral("Play");

// Selects the first entry whose text equals value exactly; with none, the selection stays.
void selectEntry(QComboBox *combo, const QString &value)
{
    for (int i = 0; i < combo->count(); ++i) {
        if (combo->itemText(i) == value) {
            combo->setCurrentIndex(i);
            return;
        }
    }
}

// The play handle drawn in column 0, in the theme's accent colour.
QIcon playIcon(const QColor &color)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(color);
    p.drawPolygon(QPolygonF({QPointF(9, 6), QPointF(26, 16), QPointF(9, 26)}));
    return QIcon(pixmap);
}

} // namespace

FrmStations::FrmStations(Parts parts, StationCommands::Services services, MediaPlayerFactory players,
                         QWidget *parent)
    : QWidget(parent), m_parts(std::move(parts)), m_players(std::move(players))
{
    setObjectName(QStringLiteral("FrmStations"));
    setWindowTitle(AppInfo::title);
    buildControls();
    setAccessibleNames();
    buildPlayer();
    m_commands = new StationCommands(m_parts.catalogue, m_parts.appearance, m_parts.trimTool, m_parts.installFolder,
                                     *this, *m_player, std::move(services), this);
    StationMenus::WindowActions windowActions{
        .play =
            [this] {
                m_player->playKey(playKey);
                m_player->showState(playKey);
            },
        .find =
            [this] {
                m_txtSearch->setFocus(Qt::ShortcutFocusReason);
                m_txtSearch->selectAll();
            },
        .settings = [this] { cmdSettingsClick(); },
        .history =
            [this] {
                if (m_parts.openHistory)
                    m_parts.openHistory(this);
            },
        .stationColumn = [this] { return pos(ColStation); },
    };
    m_menus = new StationMenus(*this, *m_grid, *m_menuBar, *m_commandStrip, *m_commands, std::move(windowActions));
    connectCommands();

    // Load, in its fixed order.
    for (int rating = 1; rating <= 5; ++rating)
        m_cboRating->addItem(QString::number(rating));
    applyColors();
    createColumns();
    fillGrid();
    refreshCategories();
    selectEntry(m_cmbGenre, m_parts.filters.genre);
    selectEntry(m_cmbCategory, m_parts.filters.category);
    selectEntry(m_cmbType, m_parts.filters.type);
    selectEntry(m_cmbRating, m_parts.filters.rating);
    // The shape the user left the window and its columns in.
    m_columns->restore(SettingsStore::MainColumns);
    WindowPlacement::restore(*this, SettingsStore::MainWindow);

    // A hidden listening window, kept as long as this one, holds a paused
    // player, so that later players start quickly.
    FrmListen *warmUp = createListenWindow();
    warmUp->ListenRow = ListenSession::WarmUpRow;
    warmUp->ListenUrl = QDir(m_parts.installFolder).filePath(FrmListen::WarmUpFile);
    warmUp->setWindowTitle(QStringLiteral("cap dummy"));
    warmUp->Play();
}

void FrmStations::buildPlayer()
{
    m_playBar = new ucPlayBar(this);
    m_playBar->setObjectName(QStringLiteral("ucPlayBar1"));
    m_playBarSlot->addWidget(m_playBar);
    PlayerView *wmp1 = m_players(this);
    wmp1->setObjectName(QStringLiteral("wmp1"));
    wmp1->hide();
    auto *player = new MainPlayer(
        m_parts.playerTexts, m_parts.trace, wmp1->player(),
        [this]() -> const Station * {
            const int row = m_grid->Row();
            if (row < 0)
                return nullptr;
            return &m_parts.catalogue.at(m_grid->ItemData(row));
        },
        this);
    connect(m_playBar, &ucPlayBar::Click, player, &MainPlayer::playKey);
    connect(m_playBar, &ucPlayBar::Volume, player, &MainPlayer::setVolume);
    connect(player, &MainPlayer::captionChanged, m_playBar, &ucPlayBar::setCaption);
    connect(player, &MainPlayer::lookChanged, m_playBar, &ucPlayBar::SetState);
    connect(player, &MainPlayer::streamChanged, m_playBar,
            [bar = m_playBar](const QString &stream) { bar->setToolTip(tr("Stream: %1").arg(stream)); });
    m_player = player;
    m_mainPlayer = player;
}

FrmListen *FrmStations::createListenWindow()
{
    auto *window = new FrmListen(m_parts.launch, m_parts.appearance.theme.colors(), m_players, this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    connect(window, &FrmListen::stationPlayed, this, &FrmStations::stationPlayed);
    connect(window, &FrmListen::songChanged, this, &FrmStations::listeningSongChanged);
    return window;
}

void FrmStations::stationPlayed(int kind, int row, const QString &date)
{
    if (kind != ListenSession::PlayedKind || row < 0 || row >= m_grid->ItemCount())
        return;
    const int index = m_grid->ItemData(row);
    m_parts.catalogue.at(index).LastDate = date;
    fillRow(row, index);
    m_parts.catalogue.dirty = true;
}

bool FrmStations::canStepStation(int step) const
{
    const int row = m_grid->Row();
    return row >= 0 && row + step >= 0 && row + step < m_grid->ItemCount();
}

void FrmStations::stepStation(int step)
{
    if (!canStepStation(step))
        return;
    const int state = m_player->playState();
    const bool stopped = state == MediaPlayer::Stopped || state == MediaPlayer::Ready ||
                         state == MediaPlayer::MediaEnded || state == MediaPlayer::Undefined;
    m_grid->setRow(m_grid->Row() + step);
    if (stopped)
        return;
    // A pause would resume the station before.
    if (state == MediaPlayer::Paused)
        m_player->stopPlayback();
    m_player->playKey(playKey);
    m_player->showState(playKey);
}

QMenu &FrmStations::rowMenu() const
{
    return m_menus->rowMenu();
}

QMenu &FrmStations::gridMenu() const
{
    return m_menus->gridMenu();
}

void FrmStations::buildControls()
{
    resize(1100, 660);

    // The arrangement: the menu bar, the filter frame across the top, the
    // command strip below it, the grid filling the rest and the play bar
    // under the grid at its width. The filters and the commands wrap onto
    // further lines in a narrow window.
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(10, 10, 10, 10);
    outer->setSpacing(8);
    // The window can shrink to what its controls need, and no further.
    outer->setSizeConstraint(QLayout::SetMinimumSize);
    m_menuBar = new QMenuBar(this);
    m_menuBar->setObjectName(QStringLiteral("menuBar"));
    m_menuBar->setAccessibleName(tr("Menu"));
    outer->setMenuBar(m_menuBar);

    auto *fraFilter = new StationFilterBar(this);
    m_cmbGenre = fraFilter->genre();
    m_cmbCategory = fraFilter->category();
    m_cmbType = fraFilter->type();
    m_cmbRating = fraFilter->rating();
    m_txtSearch = fraFilter->search();
    outer->addWidget(fraFilter);

    auto *gfxOption = new QWidget(this);
    gfxOption->setObjectName(QStringLiteral("GFXOption"));
    auto *strip = new FlowLayout(gfxOption);
    strip->setContentsMargins(0, 0, 0, 0);
    strip->setSpacing(6);
    m_commandStrip = strip;
    outer->addWidget(gfxOption);

    m_grid = new LynxGrid(this);
    m_grid->setObjectName(QStringLiteral("LynxGrid1"));
    m_grid->setMinimumHeight(120);
    m_grid->setFullRowSelect(true);
    // Several stations at once: those just added, or those to export.
    m_grid->setMultiSelect(true);
    m_grid->setTrackEdits(true);
    m_grid->setFocusRectMode(GridFocusMode::Cell);
    // Enter plays the row's station; F2, a double click or typing edit a cell.
    m_grid->setEditTrigger(m_grid->EditTrigger() & ~EditEnter);
    // The column widths are the catalogue's classic pixel widths; a slightly
    // smaller face lets the short headings ("Genre", "Type") fit them.
    QFont gridFont = m_grid->font();
    gridFont.setPointSizeF(qMax(8.0, gridFont.pointSizeF() - 1));
    m_grid->setFont(gridFont);
    m_columns = new StationColumns(*m_grid);
    outer->addWidget(m_grid, 1);

    // The play bar comes here, under the grid and as wide as it.
    m_playBarSlot = new QVBoxLayout;
    m_playBarSlot->setObjectName(QStringLiteral("ucPlayBar1Slot"));
    outer->addLayout(m_playBarSlot);

    m_cboRating = new QComboBox(this);
    m_cboRating->setObjectName(QStringLiteral("cboRating"));
    m_cboRating->hide();

    // The grid hands answers back through references: these must stay direct connections.
    connect(m_grid, &LynxGrid::RequestEdit, this, &FrmStations::gridRequestEdit, Qt::DirectConnection);
    connect(m_grid, &LynxGrid::RequestUpdate, this, &FrmStations::gridRequestUpdate, Qt::DirectConnection);
    connect(m_grid, &LynxGrid::CellUpdated, this, &FrmStations::gridCellUpdated);
    connect(m_grid, &LynxGrid::RowColChanged, this, &FrmStations::stationStepsChanged);
    connect(m_grid, &LynxGrid::ItemCountChanged, this, &FrmStations::stationStepsChanged);

    // The grid's width is read when the columns are made: give it its real size first.
    outer->activate();
}

void FrmStations::connectCommands()
{
    const auto clicked = [this](const char *name, auto slot) {
        connect(findChild<SchemeButton *>(QLatin1StringView(name)), &QPushButton::clicked, this, slot);
    };
    clicked("cmdFilter", &FrmStations::cmdFilterClick);
    clicked("cmdSearch", &FrmStations::cmdSearchClick);
    connect(m_txtSearch, &QLineEdit::returnPressed, this, &FrmStations::cmdSearchClick);
    clicked("cmdSearchWww",
            [this] { m_commands->searchWww(m_txtSearch->text(), m_cmbGenre->currentText()); });
}

// Names for screen readers where a control's caption does not say what it is:
// a drop-down would otherwise be read as its chosen entry.
void FrmStations::setAccessibleNames()
{
    m_txtSearch->setAccessibleName(tr("Search stations"));
    m_cmbGenre->setAccessibleName(tr("Genre"));
    m_cmbCategory->setAccessibleName(tr("Category"));
    m_cmbType->setAccessibleName(tr("Type"));
    m_cmbRating->setAccessibleName(tr("Rating"));
    m_cboRating->setAccessibleName(tr("Rating"));
    m_grid->setAccessibleName(tr("Stations"));
}

void FrmStations::applyColors()
{
    const ThemeColors &colors = m_parts.appearance.theme.colors();
    setPalette(themePalette(colors));
    setAutoFillBackground(true);
    m_grid->setThemeColors(colors);
    m_grid->setImageList({playIcon(QColor::fromRgba(colors.focusRect))});
    m_playBar->setThemeColors(colors);
}

void FrmStations::createColumns()
{
    m_columns->create();
    m_grid->setColImage(ColPlay, 0);
    m_grid->setColImageAlignment(ColPlay, Qt::AlignHCenter);
    m_grid->setColImageText(ColPlay, tr("Play"));
    m_grid->BindControl(ColRating, m_cboRating);
    m_grid->setRedraw(true);
}

void FrmStations::refreshCategories()
{
    const QString chosen = m_cmbCategory->currentText();
    m_cmbCategory->clear();
    m_cmbCategory->addItems(m_parts.catalogue.categories.items());
    selectEntry(m_cmbCategory, chosen);
}

int FrmStations::pos(Column column) const
{
    return m_grid->ColPosition(column);
}

void FrmStations::fillGrid()
{
    // A refill drops the cells' changed marks, which are what tells the
    // closing step to save: keep their count for it.
    commitEdits();
    m_grid->Clear();
    m_grid->setRedraw(false);

    const QString &genre = m_parts.filters.genre;
    const QString &category = m_parts.filters.category;
    const QString &type = m_parts.filters.type;
    const bool byRating = !m_parts.filters.rating.isEmpty();
    const double rating = Convert::leadingNumber(m_parts.filters.rating);

    const Catalogue &catalogue = m_parts.catalogue;
    const Positions at = positions();
    m_columns->clearNames();
    for (int index = 1; index <= catalogue.stationCount(); ++index) {
        const Station &s = catalogue.at(index);
        if (!genre.isEmpty() && !s.Genre.contains(genre, Qt::CaseInsensitive))
            continue;
        // The one case-sensitive filter, on purpose.
        if (!category.isEmpty() && !s.Category.contains(category, Qt::CaseSensitive))
            continue;
        if (!type.isEmpty() && !s.Format.contains(type, Qt::CaseInsensitive))
            continue;
        if (byRating && rating != s.Rating)
            continue;

        const int row = m_grid->AddItem();
        m_grid->setItemData(row, index);
        fillCells(row, s, at);
        m_columns->measureName(s.Name);
    }
    m_columns->stretch();
    m_grid->setRedraw(true);
}

void FrmStations::fillRow(int row, int index)
{
    fillCells(row, m_parts.catalogue.at(index), positions());
    m_columns->measureName(m_parts.catalogue.at(index).Name);
    m_columns->stretch();
}

int FrmStations::rowOf(int index) const
{
    for (int row = 0; row < m_grid->ItemCount(); ++row) {
        if (m_grid->ItemData(row) == index)
            return row;
    }
    return -1;
}

void FrmStations::showStation(int index)
{
    fillGrid();
    if (rowOf(index) < 0) {
        // The filters hide it: the user is to see what was added.
        m_parts.filters.genre.clear();
        m_parts.filters.category.clear();
        m_parts.filters.type.clear();
        m_parts.filters.rating.clear();
        for (QComboBox *combo : {m_cmbGenre, m_cmbCategory, m_cmbType, m_cmbRating})
            combo->setCurrentIndex(0);
        fillGrid();
    }
    const int row = rowOf(index);
    if (row >= 0)
        m_grid->GotoCell(row, pos(ColStation));
}

void FrmStations::addCategory(const QString &category)
{
    if (m_parts.catalogue.categories.add(category))
        m_cmbCategory->addItem(category);
}

FrmStations::Positions FrmStations::positions() const
{
    Positions at;
    for (int column = 0; column < ColumnCount; ++column)
        at[static_cast<std::size_t>(column)] = pos(static_cast<Column>(column));
    return at;
}

// The cells in the record's field order, each under its heading wherever the user dragged it.
void FrmStations::fillCells(int row, const Station &s, const Positions &at)
{
    const auto set = [this, row, &at](Column column, const QString &text) {
        m_grid->setCellText(row, at[column], text);
    };
    set(ColStation, s.Name);
    set(ColGenre, s.Genre);
    set(ColBit, s.BitRate);
    set(ColType, s.Format);
    set(ColCategory, s.Category);
    set(ColOutput, s.OutputFile);
    set(ColSingle, Convert::booleanText(s.SingleSong));
    m_grid->setCellChecked(row, at[ColSingle], s.SingleSong);
    set(ColRating, QString::number(s.Rating));
    set(ColLastDate, s.LastDate);
    set(ColSign, s.CallSign);
    set(ColStreamUrl, s.StreamURL);
    set(ColInfoUrl, s.InfoUrl);
}

void FrmStations::writeBack(int row, int index)
{
    if (index < 1 || index > m_parts.catalogue.stationCount())
        return;
    Station &s = m_parts.catalogue.at(index);
    const auto cell = [this, row](Column column) { return m_grid->CellText(row, pos(column)); };
    s.Name = cell(ColStation);
    s.Genre = cell(ColGenre);
    s.BitRate = cell(ColBit);
    s.Format = cell(ColType);
    s.Category = cell(ColCategory);
    s.OutputFile = cell(ColOutput);
    s.SingleSong = m_grid->CellChecked(row, pos(ColSingle));
    try {
        s.Rating = Convert::leadingInt32(cell(ColRating));
    } catch (const AppError &) {
        // A number too large for a rating leaves the stored one as it was.
    }
    s.LastDate = cell(ColLastDate);
    s.CallSign = cell(ColSign);
    s.StreamURL = cell(ColStreamUrl);
    s.InfoUrl = cell(ColInfoUrl);
}

void FrmStations::cmdFilterClick()
{
    m_parts.filters.genre = m_cmbGenre->currentText();
    m_parts.filters.category = m_cmbCategory->currentText();
    m_parts.filters.type = m_cmbType->currentText();
    m_parts.filters.rating = m_cmbRating->currentText();
    fillGrid();
}

void FrmStations::cmdSearchClick()
{
    const QString text = m_txtSearch->text();
    if (text.isEmpty())
        return;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);

    const int station = ColStation;
    const int category = ColCategory;
    // Name first, then category; both addressed by their indices as they stand.
    const auto match = [&](int row) {
        if (m_grid->CellText(row, station).contains(text, Qt::CaseInsensitive))
            return station;
        if (m_grid->CellText(row, category).contains(text, Qt::CaseInsensitive))
            return category;
        return -1;
    };
    const int start = m_grid->Row() + 1;
    int found = -1;
    int col = -1;
    for (int row = start; row < m_grid->ItemCount() && found < 0; ++row) {
        if ((col = match(row)) >= 0)
            found = row;
    }
    // The wrap-round pass needs a start row of 2 or more: row 0 current never looks at row 0 again.
    if (found < 0 && start >= 2) {
        for (int row = 0; row <= start && found < 0; ++row) {
            if ((col = match(row)) >= 0)
                found = row;
        }
    }
    if (found >= 0)
        m_grid->GotoCell(found, col);

    QGuiApplication::restoreOverrideCursor();
}

void FrmStations::cmdSettingsClick()
{
    if (m_parts.openSettings)
        m_parts.openSettings(this);
}

void FrmStations::gridRequestEdit(int row, int col, bool &cancel)
{
    if (col == pos(ColPlay)) {
        cancel = true;
        m_player->playKey(playKey);
        m_player->showState(playKey);
    } else if (col == pos(ColRating)) {
        const QString text = m_grid->CellText(row, col);
        if (text.isEmpty() || text == u"0")
            m_cboRating->setCurrentIndex(-1);
        else
            m_cboRating->setCurrentIndex(m_cboRating->findText(text));
    } else if (col == pos(ColSingle)) {
        m_grid->setCellChanged(row, col, true);
    }
}

void FrmStations::gridRequestUpdate(int, int col, QString &value, bool &cancel)
{
    if (col != pos(ColRating))
        return;
    // Leaving the drop-down without choosing keeps the rating as it was,
    // also one outside 1 to 5 that the list cannot show.
    if (m_cboRating->currentIndex() < 0)
        cancel = true;
    else
        value = m_cboRating->currentText();
}

void FrmStations::gridCellUpdated(int row, int)
{
    writeBack(row, m_grid->ItemData(row));
}

int FrmStations::sweepChangedCells()
{
    int changed = 0;
    for (int row = 0; row < m_grid->ItemCount(); ++row) {
        bool rowChanged = false;
        for (int col = 0; col < m_grid->Cols(); ++col) {
            if (m_grid->CellChanged(row, col)) {
                ++changed;
                rowChanged = true;
                m_grid->setCellChanged(row, col, false);
            }
        }
        if (rowChanged)
            writeBack(row, m_grid->ItemData(row));
    }
    return changed;
}

void FrmStations::commitEdits()
{
    m_sweptEdits += sweepChangedCells();
}

void FrmStations::forgetEdits()
{
    m_sweptEdits = 0;
    m_grid->Clear();
}

void FrmStations::closeEvent(QCloseEvent *event)
{
    event->accept();
    if (m_unloaded)
        return;
    m_unloaded = true;
    m_columns->save(SettingsStore::MainColumns);
    WindowPlacement::save(*this, SettingsStore::MainWindow);
    // An edit still open counts like one the user finished.
    m_grid->commitEdit();

    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const int changed = sweepChangedCells() + m_sweptEdits;
    QGuiApplication::restoreOverrideCursor();

    if (changed > 0)
        m_parts.catalogue.dirty = true;
    // A station check ends, and the recordings started from the list end
    // with it, their files complete.
    m_commands->unload();
    emit unloaded();
}
