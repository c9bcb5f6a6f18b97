#include "ui/directory/frmdirectory.h"

#include "catalogue/stationlistfile.h"
#include "player/stationplayer.h"

#include <QComboBox>
#include <QCompleter>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace {

QComboBox *newFilter(QWidget *parent, const char *name)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(QLatin1StringView(name));
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setMinimumWidth(110);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    combo->addItem(QString());
    // The lists hold hundreds of values: typing finds them wherever they start.
    combo->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    combo->completer()->setFilterMode(Qt::MatchContains);
    combo->completer()->setCompletionMode(QCompleter::PopupCompletion);
    return combo;
}

QPushButton *newButton(QWidget *parent, const char *name, const QString &text)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1StringView(name));
    button->setAutoDefault(false);
    return button;
}

} // namespace

const QList<int> FrmDirectory::bitRateChoices = {0, 32, 64, 96, 128, 192, 256, 320};

FrmDirectory::FrmDirectory(Parts parts, QWidget *parent)
    : QWidget(parent, Qt::Window), m_parts(std::move(parts)), m_iconCache(m_parts.iconFolder),
      m_icons(m_iconCache), m_model(m_icons)
{
    setObjectName(QStringLiteral("FrmDirectory"));
    setWindowTitle(tr("Station Directory"));
    buildControls();
    setAccessibleNames();
    connectControls();

    // A server setting that is no address makes every search fail with the reason.
    m_client.setServer(m_parts.server);
    for (const auto kind : {DirectoryClient::ListKind::Tags, DirectoryClient::ListKind::Countries,
                            DirectoryClient::ListKind::Languages, DirectoryClient::ListKind::Codecs})
        m_client.fetchList(kind);
    // The most liked stations to begin with, before anything is typed.
    searchNow();
}

FrmDirectory::~FrmDirectory()
{
    // The list goes before the model and timers it reports to.
    delete m_lstResults;
}

void FrmDirectory::buildControls()
{
    resize(960, 620);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(10, 10, 10, 10);
    outer->setSpacing(8);

    auto *searchRow = new QHBoxLayout;
    auto *lblSearch = new QLabel(tr("&Search"), this);
    m_txtSearch = new QLineEdit(this);
    m_txtSearch->setObjectName(QStringLiteral("txtSearch"));
    m_txtSearch->setPlaceholderText(tr("Part of a station's name"));
    m_txtSearch->setClearButtonEnabled(true);
    lblSearch->setBuddy(m_txtSearch);
    m_spinner = new QProgressBar(this);
    m_spinner->setObjectName(QStringLiteral("spinner"));
    // No range: the bar runs to and fro while a search is under way.
    m_spinner->setRange(0, 0);
    m_spinner->setTextVisible(false);
    m_spinner->setFixedWidth(90);
    QSizePolicy keepPlace = m_spinner->sizePolicy();
    keepPlace.setRetainSizeWhenHidden(true);
    m_spinner->setSizePolicy(keepPlace);
    m_spinner->hide();
    searchRow->addWidget(lblSearch);
    searchRow->addWidget(m_txtSearch, 1);
    searchRow->addWidget(m_spinner);
    outer->addLayout(searchRow);

    auto *filterRow = new QHBoxLayout;
    m_cmbTag = newFilter(this, "cmbTag");
    m_cmbCountry = newFilter(this, "cmbCountry");
    m_cmbLanguage = newFilter(this, "cmbLanguage");
    m_cmbCodec = newFilter(this, "cmbCodec");
    m_cmbCodec->setMinimumWidth(70);
    m_cmbBitRate = new QComboBox(this);
    m_cmbBitRate->setObjectName(QStringLiteral("cmbBitRate"));
    for (const int rate : bitRateChoices)
        m_cmbBitRate->addItem(rate == 0 ? tr("any") : tr("%1 kbit/s").arg(rate), rate);
    const std::pair<QString, QComboBox *> labelled[] = {{tr("&Tag"), m_cmbTag},
                                                        {tr("C&ountry"), m_cmbCountry},
                                                        {tr("&Language"), m_cmbLanguage},
                                                        {tr("Co&dec"), m_cmbCodec},
                                                        {tr("At least"), m_cmbBitRate}};
    for (const auto &[text, combo] : labelled) {
        auto *label = new QLabel(text, this);
        label->setBuddy(combo);
        filterRow->addWidget(label);
        filterRow->addWidget(combo, combo == m_cmbBitRate ? 0 : 1);
        filterRow->addSpacing(6);
    }
    outer->addLayout(filterRow);

    m_lstResults = new QTableView(this);
    m_lstResults->setObjectName(QStringLiteral("lstResults"));
    m_lstResults->setModel(&m_model);
    m_lstResults->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_lstResults->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_lstResults->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_lstResults->setTabKeyNavigation(false);
    m_lstResults->setWordWrap(false);
    m_lstResults->setAlternatingRowColors(true);
    m_lstResults->setShowGrid(false);
    m_lstResults->setIconSize(QSize(16, 16));
    QHeaderView *rows = m_lstResults->verticalHeader();
    rows->hide();
    // Rows of one height: the list lays out thousands of them without measuring each.
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(fontMetrics().height() + 8);
    QHeaderView *header = m_lstResults->horizontalHeader();
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(DirectoryResultModel::columnOf(m_order), Qt::DescendingOrder);
    header->setHighlightSections(false);
    const int widths[DirectoryResultModel::ColumnCount] = {280, 110, 220, 70, 70, 70, 70};
    for (int column = 0; column < DirectoryResultModel::ColumnCount; ++column)
        header->resizeSection(column, widths[column]);
    header->setStretchLastSection(true);
    outer->addWidget(m_lstResults, 1);

    m_lblStatus = new QLabel(this);
    m_lblStatus->setObjectName(QStringLiteral("lblStatus"));
    m_lblStatus->setWordWrap(true);
    m_lblStatus->setTextInteractionFlags(Qt::TextSelectableByMouse);
    outer->addWidget(m_lblStatus);

    auto *addRow = new QHBoxLayout;
    auto *lblCategory = new QLabel(tr("C&ategory"), this);
    m_cmbCategory = new QComboBox(this);
    m_cmbCategory->setObjectName(QStringLiteral("cmbCategory"));
    m_cmbCategory->setEditable(true);
    m_cmbCategory->setInsertPolicy(QComboBox::NoInsert);
    m_cmbCategory->setMinimumWidth(140);
    m_cmbCategory->addItem(directoryCategory);
    for (const QString &category : std::as_const(m_parts.categories)) {
        if (!category.isEmpty() && m_cmbCategory->findText(category, Qt::MatchFixedString) < 0)
            m_cmbCategory->addItem(category);
    }
    lblCategory->setBuddy(m_cmbCategory);
    m_cmdAdd = newButton(this, "cmdAdd", tr("&Add to Catalogue"));
    m_cmdClose = newButton(this, "cmdClose", tr("Close"));
    addRow->addWidget(lblCategory);
    addRow->addWidget(m_cmbCategory);
    addRow->addWidget(m_cmdAdd);
    addRow->addStretch(1);
    addRow->addWidget(m_cmdClose);
    outer->addLayout(addRow);
}

void FrmDirectory::setAccessibleNames()
{
    m_txtSearch->setAccessibleName(tr("Search the station directory"));
    m_spinner->setAccessibleName(tr("Searching"));
    m_cmbTag->setAccessibleName(tr("Tag"));
    m_cmbCountry->setAccessibleName(tr("Country"));
    m_cmbLanguage->setAccessibleName(tr("Language"));
    m_cmbCodec->setAccessibleName(tr("Codec"));
    m_cmbBitRate->setAccessibleName(tr("Minimum bit rate"));
    m_lstResults->setAccessibleName(tr("Stations found"));
    m_lblStatus->setAccessibleName(tr("Directory status"));
    m_cmbCategory->setAccessibleName(tr("Category of the stations added"));
    // The boxes one types into are read out under their box's name.
    for (QComboBox *box : {m_cmbTag, m_cmbCountry, m_cmbLanguage, m_cmbCodec, m_cmbCategory})
        box->lineEdit()->setAccessibleName(box->accessibleName());
}

void FrmDirectory::connectControls()
{
    m_searchTimer.setSingleShot(true);
    m_searchTimer.setInterval(searchDelayMs);
    connect(&m_searchTimer, &QTimer::timeout, this, &FrmDirectory::searchNow);
    m_playTimer.setSingleShot(true);
    m_playTimer.setInterval(playDelayMs);
    connect(&m_playTimer, &QTimer::timeout, this, &FrmDirectory::playCurrent);

    const auto later = [this] { m_searchTimer.start(); };
    connect(m_txtSearch, &QLineEdit::textChanged, this, later);
    connect(m_txtSearch, &QLineEdit::returnPressed, this, &FrmDirectory::searchNow);
    for (QComboBox *filter : {m_cmbTag, m_cmbCountry, m_cmbLanguage, m_cmbCodec})
        connect(filter, &QComboBox::currentTextChanged, this, later);
    connect(m_cmbBitRate, &QComboBox::currentIndexChanged, this, later);
    connect(m_lstResults->horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
            &FrmDirectory::onSortChanged);
    // The list asks for more while it lays itself out: the page is fetched after.
    connect(&m_model, &DirectoryResultModel::moreWanted, this, &FrmDirectory::fetchNextPage,
            Qt::QueuedConnection);
    connect(m_lstResults->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this] { m_playTimer.start(); });
    connect(m_lstResults, &QTableView::doubleClicked, this, &FrmDirectory::addSelected);
    m_lstResults->installEventFilter(this);
    connect(m_cmdAdd, &QPushButton::clicked, this, &FrmDirectory::addSelected);
    connect(m_cmdClose, &QPushButton::clicked, this, &QWidget::close);

    connect(&m_client, &DirectoryClient::searchFinished, this, &FrmDirectory::onSearchFinished);
    connect(&m_client, &DirectoryClient::searchFailed, this, &FrmDirectory::onSearchFailed);
    connect(&m_client, &DirectoryClient::listFinished, this, &FrmDirectory::onListFinished);
}

bool FrmDirectory::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_lstResults && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            addSelected();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void FrmDirectory::setPaging(int pageSize, int maxRows)
{
    m_pageSize = qBound(1, pageSize, DirectoryQuery::maxPageSize);
    m_model.setMaxRows(maxRows);
}

DirectoryQuery FrmDirectory::query() const
{
    DirectoryQuery q;
    q.text = m_txtSearch->text().trimmed();
    q.tag = m_cmbTag->currentText().trimmed();
    q.country = m_cmbCountry->currentText().trimmed();
    q.language = m_cmbLanguage->currentText().trimmed();
    q.codec = m_cmbCodec->currentText().trimmed();
    q.minBitRate = m_cmbBitRate->currentData().toInt();
    q.order = m_order;
    q.descending = m_descending;
    q.limit = m_pageSize;
    return q;
}

void FrmDirectory::searchNow()
{
    m_searchTimer.stop();
    // Cancels the search or page under way; may fail at once (no usable server).
    m_client.search(query());
    if (m_client.isSearching())
        showStatus(tr("Searching the station directory..."));
    showBusy();
}

void FrmDirectory::fetchNextPage()
{
    if (m_client.isSearching())
        return;
    DirectoryQuery next = m_shown;
    next.offset = m_model.rowCount();
    m_client.search(next);
    showBusy();
}

void FrmDirectory::onSearchFinished(const DirectoryQuery &query, const QList<DirectoryStation> &stations)
{
    const bool more = stations.size() >= query.limit;
    if (query.offset == 0) {
        m_shown = query;
        m_playTimer.stop();
        m_model.setResults(stations, more);
        m_lstResults->scrollToTop();
    } else {
        m_model.appendResults(stations, more);
    }
    const int rows = m_model.rowCount();
    if (rows == 0)
        showStatus(tr("No station matches the search."));
    else if (m_model.mayHaveMore())
        showStatus(tr("Stations listed: %1; more come as you scroll.").arg(rows));
    else if (more)
        showStatus(tr("The first %1 stations are listed; narrow the search to see others.").arg(rows));
    else
        showStatus(tr("Stations found: %1.").arg(rows));
    showBusy();
}

void FrmDirectory::onSearchFailed(const DirectoryQuery &query, const QString &message)
{
    if (query.offset == 0) {
        // The list would show another search's stations.
        m_playTimer.stop();
        m_model.setResults({}, false);
    } else {
        m_model.endPaging();
    }
    showStatus(message);
    showBusy();
}

void FrmDirectory::onListFinished(DirectoryClient::ListKind kind, const QList<DirectoryFilterValue> &values)
{
    QComboBox *combo = nullptr;
    switch (kind) {
    case DirectoryClient::ListKind::Tags:
        combo = m_cmbTag;
        break;
    case DirectoryClient::ListKind::Countries:
        combo = m_cmbCountry;
        break;
    case DirectoryClient::ListKind::Languages:
        combo = m_cmbLanguage;
        break;
    case DirectoryClient::ListKind::Codecs:
        combo = m_cmbCodec;
        break;
    }
    // Filling the list is no choice of the user's: it starts no search.
    const QSignalBlocker quiet(combo);
    const QString typed = combo->currentText();
    combo->clear();
    combo->addItem(QString());
    for (const DirectoryFilterValue &value : values)
        combo->addItem(value.name);
    combo->setCurrentText(typed);
}

void FrmDirectory::onSortChanged(int column, Qt::SortOrder order)
{
    if (const auto sorted = DirectoryResultModel::orderOf(column)) {
        m_order = *sorted;
        m_descending = order == Qt::DescendingOrder;
        searchNow();
        return;
    }
    // The directory cannot sort by this column: the indicator stays where the order is.
    QHeaderView *header = m_lstResults->horizontalHeader();
    const QSignalBlocker quiet(header);
    header->setSortIndicator(DirectoryResultModel::columnOf(m_order),
                             m_descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

void FrmDirectory::playCurrent()
{
    const QModelIndex current = m_lstResults->currentIndex();
    if (!current.isValid())
        return;
    const DirectoryStation &station = m_model.at(current.row());
    const QString address = station.streamAddress();
    // Whatever a server says, only internet streams are played: no local files.
    if (!StationListFile::isInternetAddress(address)) {
        showStatus(tr("%1 has no internet stream address to play.").arg(station.name));
        return;
    }
    m_parts.player.playAddress(address, station.name);
    m_client.countClick(station.stationUuid);
}

void FrmDirectory::addSelected()
{
    QModelIndexList rows = m_lstResults->selectionModel()->selectedRows();
    if (rows.isEmpty() && m_lstResults->currentIndex().isValid())
        rows.append(m_lstResults->currentIndex());
    if (rows.isEmpty()) {
        showStatus(tr("Select the stations to add."));
        return;
    }
    std::sort(rows.begin(), rows.end(),
              [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    const QString category = m_cmbCategory->currentText().trimmed();
    QList<Station> stations;
    stations.reserve(rows.size());
    for (const QModelIndex &row : std::as_const(rows))
        stations.append(toCatalogueStation(m_model.at(row.row()), category));
    showStatus(StationExchange::summary(m_parts.add(stations)));
}

void FrmDirectory::showBusy()
{
    m_spinner->setVisible(m_client.isSearching());
}

void FrmDirectory::showStatus(const QString &text)
{
    m_lblStatus->setText(text);
}
