#include "ui/recorder/frmtccontrols.h"

#include "base/conversions.h"
#include "controls/roundedframe.h"
#include "controls/schemebutton.h"
#include "controls/themedprogressbar.h"
#include "recorder/launchswitches.h"
#include "recorder/streamrecorder.h"
#include "recorder/titledelay.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {

template <typename T> T *named(T *widget, const QString &name)
{
    widget->setObjectName(name);
    return widget;
}

// A caption tied to the control it names, so assistive tools read them together.
QLabel *caption(const QString &text, QWidget *buddy)
{
    auto *label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

ThemedProgressBar *percentBar(const QString &name, const QString &accessibleName = {})
{
    auto *bar = named(new ThemedProgressBar, name);
    bar->setRange(0, 100);
    bar->setValue(0);
    bar->setFormat(QStringLiteral("%p%"));
    if (!accessibleName.isEmpty())
        bar->setAccessibleName(accessibleName);
    return bar;
}

// The sync indicators: a coloured mark before text in the window's own colour,
// so the words stay readable in either theme and the mark tells good from bad.
constexpr QColor Good(0x2f, 0xa8, 0x4f);
constexpr QColor Bad(0xe0, 0x4f, 0x45);

QLabel *indicator(const QString &name, const QString &text, const QColor &mark)
{
    auto *label = named(new QLabel, name);
    label->setTextFormat(Qt::RichText);
    label->setText(
        QStringLiteral("<span style=\"color:%1\">&#x25CF;</span> <b>%2</b>").arg(mark.name(), text));
    label->setAccessibleName(text);
    return label;
}

QLabel *valueLabel(const QString &name)
{
    auto *label = named(new QLabel, name);
    label->setTextFormat(Qt::PlainText); // station names and titles are never markup
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// A captioned value across the three value columns of a four-column grid.
void addWide(QGridLayout *grid, int &row, const QString &text, QWidget *value)
{
    grid->addWidget(caption(text, value), row, 0);
    grid->addWidget(value, row++, 1, 1, 3);
}

// Two captioned values side by side on one row of a four-column grid.
void addPair(QGridLayout *grid, int &row, const QString &left, QWidget *a, const QString &right, QWidget *b)
{
    grid->addWidget(caption(left, a), row, 0);
    grid->addWidget(a, row, 1);
    grid->addWidget(caption(right, b), row, 2);
    grid->addWidget(b, row++, 3);
}

} // namespace

QString FrmTCControls::captionRecord()
{
    return tr("Record");
}

QString FrmTCControls::captionShowHeader()
{
    return tr("Show Header");
}

QString FrmTCControls::captionShowMetadata()
{
    return tr("Show Metadata");
}

void FrmTCControls::setLabel(QLabel *label, const QString &text)
{
    if (label->text() != text)
        label->setText(text);
}

void FrmTCControls::setBar(QProgressBar *bar, int value)
{
    if (bar->value() != value)
        bar->setValue(value);
}

void FrmTCControls::applyLaunchSwitches(const LaunchSwitches &switches, QWidget *window)
{
    if (switches.Minimised)
        window->setWindowState(window->windowState() | Qt::WindowMinimized);
    if (switches.Stream)
        txtStream->setText(*switches.Stream);
    if (switches.Save)
        txtSave->setText(*switches.Save);
    if (switches.Station)
        LblStation->setText(*switches.Station);
    if (switches.Minutes)
        txtBreak[0]->setText(*switches.Minutes);
    if (switches.Megabytes)
        txtBreak[1]->setText(*switches.Megabytes);
    if (switches.SelectedBreak)
        optBreak[*switches.SelectedBreak]->setChecked(true);
    if (switches.SingleSong)
        chkSingleSong->setChecked(true);
    if (switches.Hibernate)
        ChkHibernate->setChecked(true);
    if (switches.ShutDown)
        ChkShutDown->setChecked(true);
    for (int i = 0; i < switches.MonitorClicks; ++i)
        cmdMonitor->click();
}

RecordingSettings FrmTCControls::recordingSettings() const
{
    RecordingSettings settings;
    settings.address = txtStream->text();
    settings.saveTemplate = txtSave->text();
    settings.station = LblStation->text();
    settings.singleSong = chkSingleSong->isChecked();
    settings.scanSong = txtScanSong->text();
    const int selected = optBreak[0]->isChecked() ? 0 : optBreak[1]->isChecked() ? 1 : -1;
    if (selected >= 0) {
        settings.limit = {selected == 0 ? RecorderStats::Limit::Minutes : RecorderStats::Limit::Megabytes,
                          Convert::leadingNumber(txtBreak[selected]->text())};
    }
    using enum RecordingSettings::PowerAction;
    settings.powerAction = ChkShutDown->isChecked() ? ShutDown : ChkHibernate->isChecked() ? Hibernate : None;
    return settings;
}

void FrmTCControls::showStatistics(const RecorderStats::Counters &counters)
{
    setLabel(lbStore, RecorderStats::storedSizeText(counters.bytesTotal));
    if (const auto elapsed = RecorderStats::elapsedSeconds(counters.bytesTotal, counters.bitrate))
        setLabel(lbTime, RecorderStats::MakeTime(*elapsed));
    setLabel(lbBitrate, RecorderStats::bitrateText(counters.bitrate, counters.format));
    setLabel(lbPackets, tr("%1 blocks").arg(counters.metaBlocks));
}

void FrmTCControls::showMonitor(const RecorderStats::Counters &counters)
{
    setLabel(lbBuffer_Current, RecorderStats::bytesText(double(counters.receiveBuffer)));
    setLabel(lbBuffer_Peak, RecorderStats::bytesText(counters.peakBuffer));
    if (const auto percent = RecorderStats::bufferBarPercent(counters.receiveBuffer, counters.peakBuffer))
        setBar(Bar_Buffer, *percent);
    setLabel(lbPacket_Size, RecorderStats::bytesText(counters.averagePacket));
    setLabel(lbPacket_Max, RecorderStats::bytesText(counters.largestPacket));
    setLabel(lbDCache, RecorderStats::diskCacheText(counters.diskCache));
    setBar(Bar_Cache, RecorderStats::cacheBarPercent(counters.diskCache));
    setLabel(lbSyncStat, RecorderStats::syncStatText(counters.discardedBytes, counters.resyncCount));
    setLabel(lbRealBytes, RecorderStats::bytesText(counters.bytesWritten));
    setLabel(lbBlock_Writes, QString::number(counters.blockWrites));
    setLabel(lbCutHeld, RecorderStats::cutHeldText(counters.cutHeld, counters.peakCutHeld));
    lbValid->setVisible(counters.lastTextValid);
    lbInvalid->setVisible(!counters.lastTextValid);
    lbSync->setVisible(counters.inSync);
    showMeta(counters);
}

void FrmTCControls::switchMetaView(const RecorderStats::Counters &counters)
{
    btShow->setText(btShow->text() == captionShowHeader() ? captionShowMetadata() : captionShowHeader());
    showMeta(counters);
}

void FrmTCControls::showMeta(const RecorderStats::Counters &counters)
{
    QString text = btShow->text() == captionShowHeader() ? counters.lastText : counters.headerText;
    text.remove(QChar(0)); // metadata blocks are padded with zero bytes
    if (txtMeta->toPlainText() != text)
        txtMeta->setPlainText(text);
}

void FrmTCControls::setupControls(QWidget *window)
{
    // Inputs, status and monitor scroll above the buttons, so that the
    // buttons stay in reach on a short screen.
    auto *content = named(new QWidget, QStringLiteral("recorderContent"));
    auto *column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(buildInputs());
    column->addWidget(buildStatus());
    column->addWidget(buildMonitor());
    column->addStretch(1);
    m_monitorPanel->hide();
    m_scroll = named(new QScrollArea, QStringLiteral("recorderScroll"));
    m_scroll->setAccessibleName(tr("Recording details"));
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setWidget(content);
    m_scroll->setMinimumHeight(120);

    auto *record = named(new SchemeButton(captionRecord()), QStringLiteral("cmdRecord"));
    record->setAccent(true);
    cmdRecord = record;
    cmdRecord->setDefault(true);
    cmdRecord->setMinimumWidth(110);
    cmdMonitor = named(new SchemeButton(tr("Monitor")), QStringLiteral("cmdMonitor"));
    cmdMonitor->setCheckable(true);
    cmdSchedule = named(new SchemeButton(tr("Schedule...")), QStringLiteral("cmdSchedule"));
    cmdStations = named(new SchemeButton(tr("Stations")), QStringLiteral("cmdStations"));
    cmdRecord->setToolTip(tr("Record: start recording the stream into the file named above; Stop ends it."));
    cmdMonitor->setToolTip(tr("Monitor: show or hide the buffer, disk cache and metadata figures."));
    cmdSchedule->setToolTip(tr("Schedule: repeat this recording at a time you choose."));
    cmdStations->setToolTip(tr("Stations: show the station list."));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdRecord);
    buttons->addWidget(cmdMonitor);
    buttons->addWidget(cmdSchedule);
    buttons->addStretch();
    buttons->addWidget(cmdStations);

    auto *top = new QVBoxLayout(window);
    top->addWidget(m_scroll, 1);
    top->addLayout(buttons);
    window->setMinimumWidth(qMax(520, content->minimumSizeHint().width() + 24));
}

void FrmTCControls::showWritten(const QString &summary, bool folderLink)
{
    lblSummary->setText(summary);
    for (QWidget *part : m_written)
        part->setVisible(!summary.isEmpty());
    lnkFolder->setVisible(folderLink);
}

int FrmTCControls::missingHeight() const
{
    return m_scroll->widget()->sizeHint().height() - m_scroll->height();
}

QWidget *FrmTCControls::buildInputs()
{
    auto *box = new RoundedFrame(tr("Recording"));
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    LblStation = valueLabel(QStringLiteral("LblStation"));
    QFont bold = LblStation->font();
    bold.setBold(true);
    LblStation->setFont(bold);
    form->addRow(caption(tr("Station:"), LblStation), LblStation);

    txtStream = named(new QLineEdit, QStringLiteral("txtStream"));
    txtStream->setPlaceholderText(tr("http(s)://host:port/path or a .pls playlist address"));
    form->addRow(caption(tr("Stream address:"), txtStream), txtStream);

    txtSave = named(new QLineEdit, QStringLiteral("txtSave"));
    btSave = named(new QPushButton(tr("Browse...")), QStringLiteral("btSave"));
    auto *saveRow = new QHBoxLayout;
    saveRow->addWidget(txtSave, 1);
    saveRow->addWidget(btSave);
    form->addRow(caption(tr("Save as:"), txtSave), saveRow);

    chkSingleSong = named(new QCheckBox(tr("One file per song")), QStringLiteral("chkSingleSong"));
    form->addRow(QString(), chkSingleSong);

    txtScanSong = named(new QLineEdit, QStringLiteral("txtScanSong"));
    txtScanSong->setPlaceholderText(tr("Start writing when a title holds this text"));
    lblWaitScan = named(new QLabel(tr("Waiting for a matching title...")), QStringLiteral("lblWaitScan"));
    lblWaitScan->hide();
    auto *scanRow = new QHBoxLayout;
    scanRow->addWidget(txtScanSong, 1);
    scanRow->addWidget(lblWaitScan);
    form->addRow(caption(tr("Wait for song:"), txtScanSong), scanRow);

    const QString optionTexts[2] = {tr("after minutes:"), tr("after megabytes:")};
    const QString limitNames[2] = {tr("Stop after minutes"), tr("Stop after megabytes")};
    auto *stopRow = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        optBreak[i] =
            named(new QRadioButton(optionTexts[i]), QStringLiteral("optBreak") + QString::number(i));
        txtBreak[i] = named(new QLineEdit, QStringLiteral("txtBreak") + QString::number(i));
        txtBreak[i]->setAccessibleName(limitNames[i]);
        txtBreak[i]->setMaximumWidth(70);
        stopRow->addWidget(optBreak[i]);
        stopRow->addWidget(txtBreak[i]);
        stopRow->addSpacing(12);
    }
    stopRow->addStretch();
    form->addRow(tr("Stop:"), stopRow);

    ChkHibernate = named(new QCheckBox(tr("Hibernate")), QStringLiteral("ChkHibernate"));
    ChkShutDown = named(new QCheckBox(tr("Shut down")), QStringLiteral("ChkShutDown"));
    auto *afterRow = new QHBoxLayout;
    afterRow->addWidget(ChkHibernate);
    afterRow->addWidget(ChkShutDown);
    afterRow->addStretch();
    form->addRow(tr("Afterwards:"), afterRow);
    return box;
}

QWidget *FrmTCControls::buildStatus()
{
    auto *box = new RoundedFrame(tr("Now recording"));
    auto *grid = new QGridLayout(box);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    lbStream = valueLabel(QStringLiteral("lbStream"));
    lbStream->setWordWrap(true);
    lbSong = valueLabel(QStringLiteral("lbSong"));
    lbSong->setWordWrap(true);
    lbGenre = valueLabel(QStringLiteral("lbGenre"));
    lnkStation = named(new QLabel, QStringLiteral("lnkStation"));
    lnkStream = named(new QLabel, QStringLiteral("lnkStream"));
    for (QLabel *link : {lnkStation, lnkStream})
        link->setOpenExternalLinks(true);
    lbStore = valueLabel(QStringLiteral("lbStore"));
    lbTime = valueLabel(QStringLiteral("lbTime"));
    lbBitrate = valueLabel(QStringLiteral("lbBitrate"));
    lbPackets = valueLabel(QStringLiteral("lbPackets"));
    Bar = percentBar(QStringLiteral("Bar"));
    lbDelay = valueLabel(QStringLiteral("lbDelay"));
    txtDelay = named(new QDoubleSpinBox, QStringLiteral("txtDelay"));
    txtDelay->setRange(-TitleDelay::Limit, TitleDelay::Limit);
    txtDelay->setDecimals(1);
    txtDelay->setSingleStep(0.1);
    txtDelay->setSuffix(tr(" s"));
    txtDelay->setAccessibleName(tr("Title delay in seconds"));
    txtDelay->setToolTip(
        tr("How late the station's title changes come after its songs change (negative: early)"));
    btDelaySet = named(new QPushButton(tr("Set by hand")), QStringLiteral("btDelaySet"));
    btDelayReset = named(new QPushButton(tr("Reset")), QStringLiteral("btDelayReset"));
    btDelayReset->setAccessibleName(tr("Reset the title delay"));
    auto *delayRow = new QHBoxLayout;
    delayRow->addWidget(lbDelay, 1);
    delayRow->addWidget(txtDelay);
    delayRow->addWidget(btDelaySet);
    delayRow->addWidget(btDelayReset);

    int row = 0;
    addWide(grid, row, tr("Status:"), lbStream);
    addWide(grid, row, tr("Song:"), lbSong);
    addWide(grid, row, tr("Genre:"), lbGenre);
    addWide(grid, row, tr("Home page:"), lnkStation);
    addWide(grid, row, tr("Song page:"), lnkStream);
    addPair(grid, row, tr("Stored:"), lbStore, tr("Time:"), lbTime);
    addPair(grid, row, tr("Format:"), lbBitrate, tr("Metadata:"), lbPackets);
    addWide(grid, row, tr("Limit:"), Bar);
    grid->addLayout(delayRow, row++, 0, 1, 4);

    lblSummary = valueLabel(QStringLiteral("lblSummary"));
    lblSummary->setWordWrap(true);
    lblSummary->setAccessibleName(tr("Written"));
    lnkFolder = named(new QLabel(QStringLiteral("<a href=\"folder\">%1</a>").arg(tr("Open folder"))),
                      QStringLiteral("lnkFolder"));
    lnkFolder->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    lnkFolder->setFocusPolicy(Qt::TabFocus);
    lnkFolder->setAccessibleName(tr("Open folder"));
    auto *written = new QWidget;
    auto *writtenRow = new QHBoxLayout(written);
    writtenRow->setContentsMargins(0, 0, 0, 0);
    writtenRow->addWidget(lblSummary, 1);
    writtenRow->addWidget(lnkFolder);
    addWide(grid, row, tr("Written:"), written);
    m_written = {grid->itemAtPosition(row - 1, 0)->widget(), written};
    showWritten({}, false);
    return box;
}

QWidget *FrmTCControls::buildMonitor()
{
    m_monitorPanel = named(new RoundedFrame(tr("Monitor")), QStringLiteral("monitorPanel"));
    auto *grid = new QGridLayout(m_monitorPanel);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    lbBuffer_Current = valueLabel(QStringLiteral("lbBuffer_Current"));
    lbBuffer_Peak = valueLabel(QStringLiteral("lbBuffer_Peak"));
    Bar_Buffer = percentBar(QStringLiteral("Bar_Buffer"), tr("Buffer against its peak"));
    lbPacket_Size = valueLabel(QStringLiteral("lbPacket_Size"));
    lbPacket_Max = valueLabel(QStringLiteral("lbPacket_Max"));
    lbDCache = valueLabel(QStringLiteral("lbDCache"));
    Bar_Cache = percentBar(QStringLiteral("Bar_Cache"), tr("Disk cache filled"));
    lbSyncStat = valueLabel(QStringLiteral("lbSyncStat"));
    lbCutHeld = valueLabel(QStringLiteral("lbCutHeld"));
    lbRealBytes = valueLabel(QStringLiteral("lbRealBytes"));
    lbBlock_Writes = valueLabel(QStringLiteral("lbBlock_Writes"));
    lbValid = indicator(QStringLiteral("lbValid"), tr("Valid"), Good);
    lbInvalid = indicator(QStringLiteral("lbInvalid"), tr("Invalid"), Bad);
    lbSync = indicator(QStringLiteral("lbSync"), tr("In sync"), Good);
    btShow = named(new QPushButton(captionShowHeader()), QStringLiteral("btShow"));
    txtMeta = named(new QPlainTextEdit, QStringLiteral("txtMeta"));
    txtMeta->setAccessibleName(tr("Header or metadata text"));
    txtMeta->setReadOnly(true);
    txtMeta->setMinimumHeight(90);
    txtMeta->setMaximumHeight(140);

    int row = 0;
    addPair(grid, row, tr("Buffer:"), lbBuffer_Current, tr("Peak:"), lbBuffer_Peak);
    grid->addWidget(Bar_Buffer, row++, 1, 1, 3);
    addPair(grid, row, tr("Packet:"), lbPacket_Size, tr("Largest:"), lbPacket_Max);
    addWide(grid, row, tr("Disk cache:"), lbDCache);
    grid->addWidget(Bar_Cache, row++, 1, 1, 3);
    addPair(grid, row, tr("Written:"), lbRealBytes, tr("Block writes:"), lbBlock_Writes);
    addWide(grid, row, tr("Sync:"), lbSyncStat);
    addWide(grid, row, tr("Held for cuts:"), lbCutHeld);
    auto *indicators = new QHBoxLayout;
    indicators->addWidget(lbValid);
    indicators->addWidget(lbInvalid);
    indicators->addWidget(lbSync);
    indicators->addStretch();
    indicators->addWidget(btShow);
    grid->addLayout(indicators, row++, 0, 1, 4);
    grid->addWidget(txtMeta, row++, 0, 1, 4);
    return m_monitorPanel;
}
