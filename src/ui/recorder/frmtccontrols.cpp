#include "ui/recorder/frmtccontrols.h"

#include "controls/roundedframe.h"
#include "controls/schemebutton.h"
#include "controls/themedprogressbar.h"

#include "recorder/icystream.h"
#include "recorder/launchswitches.h"
#include "recorder/recorderstats.h"
#include "recorder/recordingoutput.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
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
    label->setText(QStringLiteral("<span style=\"color:%1\">&#x25CF;</span> <b>%2</b>").arg(mark.name(), text));
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

std::optional<qint32> FrmTCControls::showStatistics(const IcyStream &stream)
{
    setLabel(lbStore, RecorderStats::StoredSizeText(stream.BytesTotal()));
    const std::optional<qint32> elapsed =
        RecorderStats::ElapsedSeconds(stream.BytesTotal(), stream.Bitrate());
    if (elapsed)
        setLabel(lbTime, RecorderStats::MakeTime(*elapsed));
    setLabel(lbBitrate, stream.Bitrate() > 0 ? QString::number(stream.Bitrate()) + QStringLiteral(" kbit/s")
                                             : QString());
    setLabel(lbPackets, QString::number(stream.MetaBlocks()) + QStringLiteral(" blocks"));
    return elapsed;
}

void FrmTCControls::showMonitor(const IcyStream &stream, const RecordingOutput &output)
{
    setLabel(lbBuffer_Current, RecorderStats::BytesText(double(stream.ReceiveBufferLength())));
    setLabel(lbBuffer_Peak, RecorderStats::BytesText(stream.PeakBuffer()));
    if (const auto percent =
            RecorderStats::BufferBarPercent(stream.ReceiveBufferLength(), stream.PeakBuffer()))
        setBar(Bar_Buffer, *percent);
    setLabel(lbPacket_Size, RecorderStats::BytesText(stream.AveragePacket()));
    setLabel(lbPacket_Max, RecorderStats::BytesText(stream.LargestPacket()));
    setLabel(lbDCache, RecorderStats::DiskCacheText(output.DiskCache().size()));
    setBar(Bar_Cache, RecorderStats::CacheBarPercent(output.DiskCache().size()));
    setLabel(lbSyncStat, RecorderStats::SyncStatText(stream.DiscardedBytes(), stream.ResyncCount()));
    setLabel(lbRealBytes, RecorderStats::BytesText(output.BytesWritten()));
    setLabel(lbBlock_Writes, QString::number(output.BlockWrites()));
    lbValid->setVisible(stream.LastTextValid());
    lbInvalid->setVisible(!stream.LastTextValid());
    lbSync->setVisible(stream.ResyncState() == 0);
    showMeta(stream);
}

void FrmTCControls::switchMetaView(const IcyStream &stream)
{
    btShow->setText(btShow->text() == CaptionShowHeader ? CaptionShowMetadata : CaptionShowHeader);
    showMeta(stream);
}

void FrmTCControls::showMeta(const IcyStream &stream)
{
    QString text = btShow->text() == CaptionShowHeader ? stream.LastText() : stream.HeaderText();
    text.remove(QChar(0)); // metadata blocks are padded with zero bytes
    if (txtMeta->toPlainText() != text)
        txtMeta->setPlainText(text);
}

void FrmTCControls::setupControls(QWidget *window)
{
    auto *top = new QVBoxLayout(window);
    top->addWidget(buildInputs());
    top->addWidget(buildStatus());

    auto *record = named(new SchemeButton(CaptionRecord), QStringLiteral("cmdRecord"));
    record->setAccent(true);
    cmdRecord = record;
    cmdRecord->setDefault(true);
    cmdRecord->setMinimumWidth(110);
    cmdMonitor = named(new SchemeButton(QStringLiteral("Monitor")), QStringLiteral("cmdMonitor"));
    cmdMonitor->setCheckable(true);
    cmdSchedule = named(new SchemeButton(QStringLiteral("Schedule...")), QStringLiteral("cmdSchedule"));
    cmdStations = named(new SchemeButton(QStringLiteral("Stations")), QStringLiteral("cmdStations"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdRecord);
    buttons->addWidget(cmdMonitor);
    buttons->addWidget(cmdSchedule);
    buttons->addStretch();
    buttons->addWidget(cmdStations);
    top->addLayout(buttons);

    top->addWidget(buildMonitor());
    monitorPanel->hide();
    window->setMinimumWidth(520);
}

QWidget *FrmTCControls::buildInputs()
{
    auto *box = new RoundedFrame(QStringLiteral("Recording"));
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    LblStation = valueLabel(QStringLiteral("LblStation"));
    QFont bold = LblStation->font();
    bold.setBold(true);
    LblStation->setFont(bold);
    form->addRow(caption(QStringLiteral("Station:"), LblStation), LblStation);

    txtStream = named(new QLineEdit, QStringLiteral("txtStream"));
    txtStream->setPlaceholderText(QStringLiteral("http(s)://host:port/path or a .pls playlist address"));
    form->addRow(caption(QStringLiteral("Stream address:"), txtStream), txtStream);

    txtSave = named(new QLineEdit, QStringLiteral("txtSave"));
    btSave = named(new QPushButton(QStringLiteral("Browse...")), QStringLiteral("btSave"));
    auto *saveRow = new QHBoxLayout;
    saveRow->addWidget(txtSave, 1);
    saveRow->addWidget(btSave);
    form->addRow(caption(QStringLiteral("Save as:"), txtSave), saveRow);

    chkSingleSong =
        named(new QCheckBox(QStringLiteral("One file per song")), QStringLiteral("chkSingleSong"));
    form->addRow(QString(), chkSingleSong);

    txtScanSong = named(new QLineEdit, QStringLiteral("txtScanSong"));
    txtScanSong->setPlaceholderText(QStringLiteral("Start writing when a title holds this text"));
    lblWaitScan =
        named(new QLabel(QStringLiteral("Waiting for a matching title...")), QStringLiteral("lblWaitScan"));
    lblWaitScan->hide();
    auto *scanRow = new QHBoxLayout;
    scanRow->addWidget(txtScanSong, 1);
    scanRow->addWidget(lblWaitScan);
    form->addRow(caption(QStringLiteral("Wait for song:"), txtScanSong), scanRow);

    const QString optionTexts[2] = {QStringLiteral("after minutes:"), QStringLiteral("after megabytes:")};
    const QString limitNames[2] = {QStringLiteral("Stop after minutes"),
                                   QStringLiteral("Stop after megabytes")};
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
    form->addRow(QStringLiteral("Stop:"), stopRow);

    ChkHibernate = named(new QCheckBox(QStringLiteral("Hibernate")), QStringLiteral("ChkHibernate"));
    ChkShutDown = named(new QCheckBox(QStringLiteral("Shut down")), QStringLiteral("ChkShutDown"));
    auto *afterRow = new QHBoxLayout;
    afterRow->addWidget(ChkHibernate);
    afterRow->addWidget(ChkShutDown);
    afterRow->addStretch();
    form->addRow(QStringLiteral("Afterwards:"), afterRow);
    return box;
}

QWidget *FrmTCControls::buildStatus()
{
    auto *box = new RoundedFrame(QStringLiteral("Now recording"));
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

    int row = 0;
    addWide(grid, row, QStringLiteral("Status:"), lbStream);
    addWide(grid, row, QStringLiteral("Song:"), lbSong);
    addWide(grid, row, QStringLiteral("Genre:"), lbGenre);
    addWide(grid, row, QStringLiteral("Home page:"), lnkStation);
    addWide(grid, row, QStringLiteral("Song page:"), lnkStream);
    addPair(grid, row, QStringLiteral("Stored:"), lbStore, QStringLiteral("Time:"), lbTime);
    addPair(grid, row, QStringLiteral("Bit rate:"), lbBitrate, QStringLiteral("Metadata:"), lbPackets);
    addWide(grid, row, QStringLiteral("Limit:"), Bar);
    return box;
}

QWidget *FrmTCControls::buildMonitor()
{
    monitorPanel = named(new RoundedFrame(QStringLiteral("Monitor")), QStringLiteral("monitorPanel"));
    auto *grid = new QGridLayout(monitorPanel);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    lbBuffer_Current = valueLabel(QStringLiteral("lbBuffer_Current"));
    lbBuffer_Peak = valueLabel(QStringLiteral("lbBuffer_Peak"));
    Bar_Buffer = percentBar(QStringLiteral("Bar_Buffer"), QStringLiteral("Buffer against its peak"));
    lbPacket_Size = valueLabel(QStringLiteral("lbPacket_Size"));
    lbPacket_Max = valueLabel(QStringLiteral("lbPacket_Max"));
    lbDCache = valueLabel(QStringLiteral("lbDCache"));
    Bar_Cache = percentBar(QStringLiteral("Bar_Cache"), QStringLiteral("Disk cache filled"));
    lbSyncStat = valueLabel(QStringLiteral("lbSyncStat"));
    lbRealBytes = valueLabel(QStringLiteral("lbRealBytes"));
    lbBlock_Writes = valueLabel(QStringLiteral("lbBlock_Writes"));
    lbValid = indicator(QStringLiteral("lbValid"), QStringLiteral("Valid"), Good);
    lbInvalid = indicator(QStringLiteral("lbInvalid"), QStringLiteral("Invalid"), Bad);
    lbSync = indicator(QStringLiteral("lbSync"), QStringLiteral("In sync"), Good);
    btShow = named(new QPushButton(CaptionShowHeader), QStringLiteral("btShow"));
    txtMeta = named(new QPlainTextEdit, QStringLiteral("txtMeta"));
    txtMeta->setAccessibleName(QStringLiteral("Header or metadata text"));
    txtMeta->setReadOnly(true);
    txtMeta->setMinimumHeight(90);
    txtMeta->setMaximumHeight(140);

    int row = 0;
    addPair(grid, row, QStringLiteral("Buffer:"), lbBuffer_Current, QStringLiteral("Peak:"), lbBuffer_Peak);
    grid->addWidget(Bar_Buffer, row++, 1, 1, 3);
    addPair(grid, row, QStringLiteral("Packet:"), lbPacket_Size, QStringLiteral("Largest:"), lbPacket_Max);
    addWide(grid, row, QStringLiteral("Disk cache:"), lbDCache);
    grid->addWidget(Bar_Cache, row++, 1, 1, 3);
    addPair(grid, row, QStringLiteral("Written:"), lbRealBytes, QStringLiteral("Block writes:"),
            lbBlock_Writes);
    addWide(grid, row, QStringLiteral("Sync:"), lbSyncStat);
    auto *indicators = new QHBoxLayout;
    indicators->addWidget(lbValid);
    indicators->addWidget(lbInvalid);
    indicators->addWidget(lbSync);
    indicators->addStretch();
    indicators->addWidget(btShow);
    grid->addLayout(indicators, row++, 0, 1, 4);
    grid->addWidget(txtMeta, row++, 0, 1, 4);
    return monitorPanel;
}
