#include "ui/history/frmhistory.h"

#include "base/appinfo.h"
#include "base/prompt.h"
#include "base/shell.h"
#include "history/historycsv.h"
#include "history/historyfilter.h"
#include "history/historymodel.h"
#include "history/historystore.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDateEdit>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSaveFile>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

FrmHistory::FrmHistory(HistoryStore &store, Shell &shell, Prompt &prompt, Hooks hooks, QWidget *parent)
    : QWidget(parent, Qt::Window), m_store(store), m_shell(shell), m_prompt(prompt),
      m_hooks(std::move(hooks)), m_model(new HistoryModel(store, this)),
      m_filter(new HistoryFilter(*m_model, this))
{
    setObjectName(QStringLiteral("FrmHistory"));
    setWindowTitle(AppInfo::title + tr(" - History"));
    buildControls();

    for (const QString &station : store.stations())
        addStation(station);
    connect(&store, &HistoryStore::entryAdded, this,
            [this] { addStation(m_store.at(m_store.size() - 1).station); });
    connect(m_txtSearch, &QLineEdit::textChanged, m_filter, &HistoryFilter::setText);
    connect(m_cmbStation, &QComboBox::currentIndexChanged, this,
            [this] { m_filter->setStation(m_cmbStation->currentData().toString()); });
    connect(m_chkDay, &QCheckBox::toggled, this, &FrmHistory::dayFilterChanged);
    connect(m_dtpDay, &QDateEdit::dateChanged, this, &FrmHistory::dayFilterChanged);
    for (const auto signal : {&QAbstractItemModel::rowsInserted, &QAbstractItemModel::rowsRemoved})
        connect(m_filter, signal, this, &FrmHistory::showCount);
    connect(m_filter, &QAbstractItemModel::layoutChanged, this, &FrmHistory::showCount);
    connect(m_filter, &QAbstractItemModel::modelReset, this, &FrmHistory::showCount);
    showCount();
}

void FrmHistory::buildControls()
{
    resize(760, 520);
    auto *layout = new QVBoxLayout(this);

    auto *filters = new QHBoxLayout;
    m_txtSearch = new QLineEdit(this);
    m_txtSearch->setObjectName(QStringLiteral("txtSearch"));
    m_txtSearch->setPlaceholderText(tr("Search titles and stations"));
    m_txtSearch->setAccessibleName(tr("Search the history"));
    m_txtSearch->setClearButtonEnabled(true);
    filters->addWidget(m_txtSearch, 2);
    m_cmbStation = new QComboBox(this);
    m_cmbStation->setObjectName(QStringLiteral("cmbStation"));
    m_cmbStation->setAccessibleName(tr("Station"));
    m_cmbStation->addItem(tr("All stations"), QString());
    m_cmbStation->setMinimumContentsLength(16);
    m_cmbStation->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    filters->addWidget(m_cmbStation, 1);
    m_chkDay = new QCheckBox(tr("Only on"), this);
    m_chkDay->setObjectName(QStringLiteral("chkDay"));
    filters->addWidget(m_chkDay);
    m_dtpDay = new QDateEdit(QDate::currentDate(), this);
    m_dtpDay->setObjectName(QStringLiteral("dtpDay"));
    m_dtpDay->setAccessibleName(tr("Day"));
    m_dtpDay->setCalendarPopup(true);
    m_dtpDay->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    m_dtpDay->setEnabled(false);
    filters->addWidget(m_dtpDay);
    layout->addLayout(filters);

    m_grdTitles = new QTableView(this);
    m_grdTitles->setObjectName(QStringLiteral("grdTitles"));
    m_grdTitles->setAccessibleName(tr("Titles played"));
    m_grdTitles->setModel(m_filter);
    m_grdTitles->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grdTitles->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grdTitles->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grdTitles->setWordWrap(false);
    m_grdTitles->setContextMenuPolicy(Qt::CustomContextMenu);
    // Fixed row heights and column widths: nothing is measured over 100,000 rows.
    m_grdTitles->verticalHeader()->hide();
    m_grdTitles->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_grdTitles->verticalHeader()->setDefaultSectionSize(m_grdTitles->fontMetrics().height() + 6);
    m_grdTitles->horizontalHeader()->setStretchLastSection(true);
    m_grdTitles->setColumnWidth(HistoryModel::TimeColumn, m_grdTitles->fontMetrics().horizontalAdvance(
                                                              QStringLiteral("8888-88-88 88:88:888")));
    m_grdTitles->setColumnWidth(HistoryModel::StationColumn, 180);
    m_grdTitles->setSortingEnabled(true);
    m_grdTitles->sortByColumn(HistoryModel::TimeColumn, Qt::DescendingOrder);
    layout->addWidget(m_grdTitles, 1);

    m_actCopy = new QAction(tr("Copy \"Artist - Title\""), this);
    m_actCopy->setShortcut(QKeySequence::Copy);
    m_actCopy->setShortcutContext(Qt::WidgetShortcut);
    m_actSearch = new QAction(tr("Search the Web"), this);
    m_grdTitles->addActions({m_actCopy, m_actSearch});
    connect(m_actCopy, &QAction::triggered, this, &FrmHistory::copyTitle);
    connect(m_actSearch, &QAction::triggered, this, &FrmHistory::searchTitle);
    connect(m_grdTitles, &QWidget::customContextMenuRequested, this, &FrmHistory::showRowMenu);

    auto *bottom = new QHBoxLayout;
    m_lblCount = new QLabel(this);
    m_lblCount->setObjectName(QStringLiteral("lblCount"));
    bottom->addWidget(m_lblCount, 1);
    auto *cmdExport = new QPushButton(tr("Export CSV..."), this);
    cmdExport->setObjectName(QStringLiteral("cmdExport"));
    auto *cmdClose = new QPushButton(tr("Close"), this);
    cmdClose->setObjectName(QStringLiteral("cmdClose"));
    bottom->addWidget(cmdExport);
    bottom->addWidget(cmdClose);
    layout->addLayout(bottom);
    connect(cmdExport, &QPushButton::clicked, this, &FrmHistory::exportCsv);
    connect(cmdClose, &QPushButton::clicked, this, &QWidget::close);
}

void FrmHistory::addStation(const QString &station)
{
    if (m_cmbStation->findData(station) >= 0)
        return;
    // After "All stations", in alphabetical order.
    int at = 1;
    while (at < m_cmbStation->count() &&
           m_cmbStation->itemData(at).toString().compare(station, Qt::CaseInsensitive) < 0)
        ++at;
    m_cmbStation->insertItem(at, station.isEmpty() ? tr("(no name)") : station, station);
}

void FrmHistory::dayFilterChanged()
{
    m_dtpDay->setEnabled(m_chkDay->isChecked());
    m_filter->setDay(m_chkDay->isChecked() ? m_dtpDay->date() : QDate());
}

void FrmHistory::showCount()
{
    m_lblCount->setText(tr("%1 of %2 titles").arg(m_filter->rowCount()).arg(m_model->rowCount()));
}

void FrmHistory::showRowMenu(const QPoint &at)
{
    const QModelIndex index = m_grdTitles->indexAt(at);
    if (!index.isValid())
        return;
    m_grdTitles->setCurrentIndex(index);
    QMenu menu(this);
    menu.addActions({m_actCopy, m_actSearch});
    menu.exec(m_grdTitles->viewport()->mapToGlobal(at));
}

QString FrmHistory::currentTitle() const
{
    const QModelIndex index = m_grdTitles->currentIndex();
    return index.isValid() ? m_filter->entry(index.row()).title : QString();
}

void FrmHistory::copyTitle()
{
    const QString title = currentTitle();
    if (!title.isEmpty())
        QGuiApplication::clipboard()->setText(title);
}

void FrmHistory::searchTitle()
{
    const QString title = currentTitle();
    if (!title.isEmpty())
        m_shell.openDocument(WebSearchAddress.arg(QString::fromLatin1(QUrl::toPercentEncoding(title))));
}

void FrmHistory::exportCsv()
{
    const QString suggested = QDir::home().filePath(tr("Tunecatch history.csv"));
    const QString path = m_hooks.chooseExportPath
                             ? m_hooks.chooseExportPath(this, suggested)
                             : QFileDialog::getSaveFileName(this, tr("Export the History"), suggested,
                                                            tr("CSV files (*.csv);;All files (*)"));
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    QString failure = file.open(QIODevice::WriteOnly) ? writeHistoryCsv(*m_filter, file) : file.errorString();
    if (failure.isEmpty() && !file.commit())
        failure = file.errorString();
    if (!failure.isEmpty()) {
        m_prompt.message(tr("The history could not be exported to %1: %2").arg(path, failure), AppInfo::title,
                         Prompt::Icon::Warning);
    }
}
