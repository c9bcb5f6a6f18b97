#include "recorder/frmtc.h"

#include "app/apperror.h"
#include "app/apppaths.h"
#include "app/appstate.h"
#include "app/conversions.h"
#include "app/prompt.h"
#include "catalogue/filedl.h"
#include "catalogue/playlist.h"
#include "recorder/launchswitches.h"
#include "recorder/modshutdown.h"
#include "recorder/recorderstats.h"
#include "recorder/streamaddress.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QTcpSocket>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The statistics timer also checks the stop limit; the monitor refreshes faster.
constexpr int StatsInterval = 500;
constexpr int UpdateInterval = 250;
constexpr int LaunchDelay = 300;
// Extra height, beyond the panel's own, that opening the monitor adds.
constexpr int MonitorMargin = 12;

template <typename T> T *named(T *widget, const QString &name)
{
    widget->setObjectName(name);
    return widget;
}

// Labels and bars change only when their content does, so nothing flickers.
void setLabel(QLabel *label, const QString &text)
{
    if (label->text() != text)
        label->setText(text);
}

void setBar(QProgressBar *bar, int value)
{
    if (bar->value() != value)
        bar->setValue(value);
}

QProgressBar *percentBar(const QString &name)
{
    auto *bar = named(new QProgressBar, name);
    bar->setRange(0, 100);
    bar->setValue(0);
    bar->setFormat(QStringLiteral("%p%"));
    return bar;
}

QLabel *valueLabel(const QString &name)
{
    auto *label = named(new QLabel, name);
    label->setTextFormat(Qt::PlainText); // station names and titles are never markup
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// Two captioned values side by side on one row of a four-column grid.
void addPair(QGridLayout *grid, int &row, const QString &left, QWidget *a, const QString &right, QWidget *b)
{
    grid->addWidget(new QLabel(left), row, 0);
    grid->addWidget(a, row, 1);
    grid->addWidget(new QLabel(right), row, 2);
    grid->addWidget(b, row++, 3);
}

QString linkText(const QString &url)
{
    if (url.isEmpty())
        return {};
    const QString escaped = url.toHtmlEscaped();
    return QStringLiteral("<a href=\"") + escaped + QStringLiteral("\">") + escaped + QStringLiteral("</a>");
}

} // namespace

FrmTC::FrmTC(AppState &state, PowerControl &power, QWidget *parent, Hooks hooks)
    : QWidget(parent, Qt::Window), m_state(state), m_power(power), m_hooks(std::move(hooks)), m_stream(*this),
      m_output([this](const QString &message) { setLabel(lbStream, message); })
{
    if (!m_hooks.now)
        m_hooks.now = [] { return QDateTime::currentDateTime(); };
    if (!m_hooks.chooseSavePath) {
        m_hooks.chooseSavePath = [](QWidget *owner, const QString &current) {
            return QFileDialog::getSaveFileName(owner, QStringLiteral("Stream Save Location"), current,
                                                QStringLiteral("MP3 File (*.mp3)"));
        };
    }
    setObjectName(QStringLiteral("FrmTC"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(AppState::AppTitle + QStringLiteral(" - Recorder"));

    WS = named(new QTcpSocket(this), QStringLiteral("WS"));
    m_fileDL = named(new FileDL(this), QStringLiteral("FileDL"));
    tmrStats = named(new QTimer(this), QStringLiteral("tmrStats"));
    tmrUpdate = named(new QTimer(this), QStringLiteral("tmrUpdate"));
    tmrLaunch = named(new QTimer(this), QStringLiteral("tmrLaunch"));
    tmrStats->setInterval(StatsInterval);
    tmrUpdate->setInterval(UpdateInterval);
    tmrLaunch->setInterval(LaunchDelay);

    buildControls();
    wireControls();
    load();
}

FrmTC::~FrmTC()
{
    // A window destroyed without being closed still completes its file; the
    // socket outlives this part of the object, so it must not call back.
    WS->disconnect(this);
    if (m_recording) {
        EndStream();
        m_output.CloseFile();
    }
}

void FrmTC::buildControls()
{
    auto *top = new QVBoxLayout(this);
    top->addWidget(buildInputs());
    top->addWidget(buildStatus());

    cmdRecord = named(new QPushButton(CaptionRecord), QStringLiteral("cmdRecord"));
    cmdRecord->setDefault(true);
    cmdRecord->setMinimumWidth(110);
    cmdMonitor = named(new QPushButton(QStringLiteral("Monitor")), QStringLiteral("cmdMonitor"));
    cmdMonitor->setCheckable(true);
    cmdSchedule = named(new QPushButton(QStringLiteral("Schedule...")), QStringLiteral("cmdSchedule"));
    cmdStations = named(new QPushButton(QStringLiteral("Stations")), QStringLiteral("cmdStations"));
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdRecord);
    buttons->addWidget(cmdMonitor);
    buttons->addWidget(cmdSchedule);
    buttons->addStretch();
    buttons->addWidget(cmdStations);
    top->addLayout(buttons);

    top->addWidget(buildMonitor());
    monitorPanel->hide();
    setMinimumWidth(520);
}

QWidget *FrmTC::buildInputs()
{
    auto *box = new QGroupBox(QStringLiteral("Recording"));
    auto *form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);

    LblStation = valueLabel(QStringLiteral("LblStation"));
    QFont bold = LblStation->font();
    bold.setBold(true);
    LblStation->setFont(bold);
    form->addRow(QStringLiteral("Station:"), LblStation);

    txtStream = named(new QLineEdit, QStringLiteral("txtStream"));
    txtStream->setPlaceholderText(QStringLiteral("http://host:port/path or a .pls playlist address"));
    form->addRow(QStringLiteral("Stream address:"), txtStream);

    txtSave = named(new QLineEdit, QStringLiteral("txtSave"));
    btSave = named(new QPushButton(QStringLiteral("Browse...")), QStringLiteral("btSave"));
    auto *saveRow = new QHBoxLayout;
    saveRow->addWidget(txtSave, 1);
    saveRow->addWidget(btSave);
    form->addRow(QStringLiteral("Save as:"), saveRow);

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
    form->addRow(QStringLiteral("Wait for song:"), scanRow);

    const QString optionTexts[2] = {QStringLiteral("after minutes:"), QStringLiteral("after megabytes:")};
    auto *stopRow = new QHBoxLayout;
    for (int i = 0; i < 2; ++i) {
        optBreak[i] =
            named(new QRadioButton(optionTexts[i]), QStringLiteral("optBreak") + QString::number(i));
        txtBreak[i] = named(new QLineEdit, QStringLiteral("txtBreak") + QString::number(i));
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

QWidget *FrmTC::buildStatus()
{
    auto *box = new QGroupBox(QStringLiteral("Now recording"));
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
    const auto wide = [&](const QString &caption, QWidget *value) {
        grid->addWidget(new QLabel(caption), row, 0);
        grid->addWidget(value, row++, 1, 1, 3);
    };
    wide(QStringLiteral("Status:"), lbStream);
    wide(QStringLiteral("Song:"), lbSong);
    wide(QStringLiteral("Genre:"), lbGenre);
    wide(QStringLiteral("Home page:"), lnkStation);
    wide(QStringLiteral("Song page:"), lnkStream);
    addPair(grid, row, QStringLiteral("Stored:"), lbStore, QStringLiteral("Time:"), lbTime);
    addPair(grid, row, QStringLiteral("Bit rate:"), lbBitrate, QStringLiteral("Metadata:"), lbPackets);
    wide(QStringLiteral("Limit:"), Bar);
    return box;
}

QWidget *FrmTC::buildMonitor()
{
    monitorPanel = named(new QGroupBox(QStringLiteral("Monitor")), QStringLiteral("monitorPanel"));
    auto *grid = new QGridLayout(monitorPanel);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);

    lbBuffer_Current = valueLabel(QStringLiteral("lbBuffer_Current"));
    lbBuffer_Peak = valueLabel(QStringLiteral("lbBuffer_Peak"));
    Bar_Buffer = percentBar(QStringLiteral("Bar_Buffer"));
    lbPacket_Size = valueLabel(QStringLiteral("lbPacket_Size"));
    lbPacket_Max = valueLabel(QStringLiteral("lbPacket_Max"));
    lbDCache = valueLabel(QStringLiteral("lbDCache"));
    Bar_Cache = percentBar(QStringLiteral("Bar_Cache"));
    lbSyncStat = valueLabel(QStringLiteral("lbSyncStat"));
    lbRealBytes = valueLabel(QStringLiteral("lbRealBytes"));
    lbBlock_Writes = valueLabel(QStringLiteral("lbBlock_Writes"));
    lbValid = named(new QLabel(QStringLiteral("Valid")), QStringLiteral("lbValid"));
    lbInvalid = named(new QLabel(QStringLiteral("Invalid")), QStringLiteral("lbInvalid"));
    lbSync = named(new QLabel(QStringLiteral("In sync")), QStringLiteral("lbSync"));
    lbValid->setStyleSheet(QStringLiteral("color: #1b7f2a; font-weight: bold;"));
    lbInvalid->setStyleSheet(QStringLiteral("color: #b3261e; font-weight: bold;"));
    lbSync->setStyleSheet(QStringLiteral("color: #1b7f2a;"));
    btShow = named(new QPushButton(CaptionShowHeader), QStringLiteral("btShow"));
    txtMeta = named(new QPlainTextEdit, QStringLiteral("txtMeta"));
    txtMeta->setReadOnly(true);
    txtMeta->setMinimumHeight(90);
    txtMeta->setMaximumHeight(140);

    int row = 0;
    addPair(grid, row, QStringLiteral("Buffer:"), lbBuffer_Current, QStringLiteral("Peak:"), lbBuffer_Peak);
    grid->addWidget(Bar_Buffer, row++, 1, 1, 3);
    addPair(grid, row, QStringLiteral("Packet:"), lbPacket_Size, QStringLiteral("Largest:"), lbPacket_Max);
    grid->addWidget(new QLabel(QStringLiteral("Disk cache:")), row, 0);
    grid->addWidget(lbDCache, row++, 1, 1, 3);
    grid->addWidget(Bar_Cache, row++, 1, 1, 3);
    addPair(grid, row, QStringLiteral("Written:"), lbRealBytes, QStringLiteral("Block writes:"),
            lbBlock_Writes);
    grid->addWidget(new QLabel(QStringLiteral("Sync:")), row, 0);
    grid->addWidget(lbSyncStat, row++, 1, 1, 3);
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

void FrmTC::wireControls()
{
    connect(cmdRecord, &QPushButton::clicked, this, &FrmTC::cmdRecord_Click);
    connect(cmdMonitor, &QPushButton::clicked, this, &FrmTC::cmdMonitor_Click);
    connect(cmdSchedule, &QPushButton::clicked, this, &FrmTC::cmdSchedule_Click);
    connect(cmdStations, &QPushButton::clicked, this, &FrmTC::stationsRequested);
    connect(btSave, &QPushButton::clicked, this, &FrmTC::btSave_Click);
    connect(btShow, &QPushButton::clicked, this, &FrmTC::btShow_Click);
    // At most one power action: checking one box clears the other.
    connect(ChkHibernate, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            ChkShutDown->setChecked(false);
    });
    connect(ChkShutDown, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            ChkHibernate->setChecked(false);
    });
    connect(tmrStats, &QTimer::timeout, this, &FrmTC::tmrStats_Timer);
    connect(tmrUpdate, &QTimer::timeout, this, &FrmTC::tmrUpdate_Timer);
    connect(tmrLaunch, &QTimer::timeout, this, &FrmTC::tmrLaunch_Timer);
    connect(WS, &QTcpSocket::readyRead, this, &FrmTC::onSocketData);
    connect(WS, &QTcpSocket::disconnected, this, &FrmTC::onSocketClosed);
    connect(m_fileDL, &FileDL::DownloadComplete, this, &FrmTC::onDownloadComplete);
    connect(m_fileDL, &FileDL::DownloadError, this, &FrmTC::onDownloadError);
}

void FrmTC::load()
{
    m_recording = false;
    m_monitorShown = false;
    if (m_state.LaunchMode) {
        cmdStations->setEnabled(false);
        applyLaunchSwitches();
    }
    if (txtSave->text().isEmpty())
        txtSave->setText(DefaultSaveTemplate);
    tmrStats->start();
    if (m_state.LaunchMode)
        tmrLaunch->start();
}

void FrmTC::applyLaunchSwitches()
{
    const LaunchSwitches switches = ParseLaunchSwitches(m_state.CommandArg);
    if (switches.Minimised)
        setWindowState(windowState() | Qt::WindowMinimized);
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

void FrmTC::SetMode(bool enabled)
{
    txtSave->setEnabled(enabled);
    txtStream->setEnabled(enabled);
    txtBreak[0]->setEnabled(enabled);
    txtBreak[1]->setEnabled(enabled);
    optBreak[0]->setEnabled(enabled);
    optBreak[1]->setEnabled(enabled);
    btSave->setEnabled(enabled);
}

void FrmTC::cmdRecord_Click()
{
    lbSong->clear();
    if (m_recording) {
        m_fileDL->Cancel(TagRecording);
        EndStream();
        m_output.CloseFile();
        SetMode(true);
        cmdRecord->setText(CaptionRecord);
        m_recording = false;
        return;
    }
    cmdRecord->setText(CaptionStop);
    m_recording = true;
    SetMode(false);
    const QString address = txtStream->text();
    if (address.toLower().contains(QStringLiteral(".pls")))
        FetchPlaylist(address, TagRecording);
    else
        StartRecording(address);
}

// The recording as set up here, repeated by a task an hour from now.
void FrmTC::cmdSchedule_Click()
{
    RecordingInputs inputs;
    inputs.Station = LblStation->text();
    inputs.SaveLocation = txtSave->text();
    inputs.StreamAddress = txtStream->text();
    inputs.SingleSong = chkSingleSong->isChecked();
    inputs.Hibernate = ChkHibernate->isChecked();
    inputs.ShutDown = ChkShutDown->isChecked();
    inputs.SelectedBreak = optBreak[0]->isChecked() ? 0 : optBreak[1]->isChecked() ? 1 : -1;
    inputs.BreakValues[0] = txtBreak[0]->text();
    inputs.BreakValues[1] = txtBreak[1]->text();
    ScheduleRecording(inputs, m_hooks.now, m_state.prompt, m_hooks.scheduling, this);
}

void FrmTC::StartRecording(const QString &address)
{
    m_output.SetFileName(BuildFileName());
    if (StopOverwrite())
        return;
    if (!chkSingleSong->isChecked() && !m_output.OpenFile())
        return;
    StartStream(address);
}

QString FrmTC::BuildFileName() const
{
    return ::BuildFileName(txtSave->text(), LblStation->text(), m_hooks.now(), AppPaths::RecordingsFolder());
}

bool FrmTC::StopOverwrite()
{
    QFile existing(m_output.FileName());
    if (!existing.open(QIODevice::ReadOnly))
        return false;
    existing.close();
    if (m_state.LaunchMode)
        return false;
    return !m_state.prompt.askYesNo(OverwriteQuestion, AppState::AppTitle, Prompt::Icon::Warning);
}

bool FrmTC::StartStream(const QString &address)
{
    StreamAddress target;
    try {
        target = ParseAddress(address);
    } catch (const AppError &error) {
        setLabel(lbStream, QStringLiteral("Invalid stream address: ") + error.description());
        return false;
    }
    setLabel(lbStream, QStringLiteral("Connecting to: ") + address);
    WS->abort();
    WS->connectToHost(target.Host, quint16(target.Port));
    m_stream.Reset();
    m_output.ResetCounters();

    const quint32 attempt = ++m_attempt;
    QPointer<FrmTC> self(this);
    ConnectOutcome outcome = waitForConnection();
    // The window may have been closed, or the recording stopped, meanwhile.
    if (!self)
        return false;
    m_connectWait = nullptr;
    if (attempt != m_attempt)
        return false;
    // A station that accepts and hangs up at once may already be gone here.
    if (outcome == ConnectOutcome::Connected && WS->state() != QAbstractSocket::ConnectedState)
        outcome = ConnectOutcome::PeerClosed;
    switch (outcome) {
    case ConnectOutcome::Connected:
        break;
    case ConnectOutcome::Failed:
        setLabel(lbStream, TextNoConnection);
        return false;
    case ConnectOutcome::PeerClosed:
        setLabel(lbStream, TextNotAccepting);
        return false;
    case ConnectOutcome::Waiting:
    case ConnectOutcome::Abandoned:
        return false;
    }
    WS->write(BuildRequest(target));
    setLabel(lbStream, QStringLiteral("Connected, waiting for the station's answer..."));
    return true;
}

FrmTC::ConnectOutcome FrmTC::waitForConnection()
{
    ConnectOutcome outcome = ConnectOutcome::Waiting;
    QEventLoop loop;
    const auto finish = [&outcome, &loop](ConnectOutcome result) {
        if (outcome == ConnectOutcome::Waiting) {
            outcome = result;
            loop.quit();
        }
    };
    connect(WS, &QTcpSocket::connected, &loop, [&finish] { finish(ConnectOutcome::Connected); });
    connect(WS, &QTcpSocket::errorOccurred, &loop, [&finish](QAbstractSocket::SocketError error) {
        finish(error == QAbstractSocket::RemoteHostClosedError ? ConnectOutcome::PeerClosed
                                                               : ConnectOutcome::Failed);
    });
    connect(WS, &QObject::destroyed, &loop, [&finish] { finish(ConnectOutcome::Abandoned); });
    if (WS->state() == QAbstractSocket::ConnectedState)
        return ConnectOutcome::Connected;
    if (WS->state() == QAbstractSocket::UnconnectedState)
        return ConnectOutcome::Failed;
    m_connectWait = &loop;
    loop.exec();
    // A quit of the whole program ends every loop; the wait is abandoned then.
    if (outcome == ConnectOutcome::Waiting)
        outcome = ConnectOutcome::Abandoned;
    return outcome;
}

void FrmTC::EndStream()
{
    m_stream.FlushRest();
    ++m_attempt;
    if (m_connectWait) {
        m_connectWait->quit();
        m_connectWait = nullptr;
    }
    {
        // Our own close is no news from the station.
        const QSignalBlocker quiet(WS);
        WS->abort();
    }
    Cleanup();
}

// Nothing is held beyond what EndStream has closed; kept as the one place for it.
void FrmTC::Cleanup() {}

void FrmTC::onSocketData()
{
    const QByteArray packet = WS->readAll();
    if (!m_recording)
        return;
    const bool hadHeader = m_stream.HeaderDone();
    m_stream.OnData(packet);
    if (hadHeader || !m_stream.HeaderDone())
        return;
    // Anything but an ICY or HTTP 200 answer is worth telling: it explains
    // why nothing will be written.
    const QString status = m_stream.HeaderText().section(QStringLiteral("\r\n"), 0, 0);
    if (!status.contains(QStringLiteral(" 200")))
        setLabel(lbStream, QStringLiteral("Radio Station answered: ") + status);
}

void FrmTC::onSocketClosed()
{
    // No reconnection: the recording stays as it is until Stop or its limit.
    if (m_recording)
        setLabel(lbStream, TextClosedByStation);
}

void FrmTC::FetchPlaylist(const QString &address, const QString &tag)
{
    QString url = address;
    try {
        if (Playlist::IsDirectoryReference(address))
            url = Playlist::PlaylistServiceAddress(Playlist::DirectoryNumber(address));
    } catch (const AppError &error) {
        onDownloadError(tag, error.number(), error.description());
        return;
    }
    m_fileDL->BeginDownload(QUrl::fromUserInput(url), tag);
}

void FrmTC::onDownloadComplete(const QString &key, const QByteArray &body)
{
    if (key != TagRecording)
        return;
    const QString address = Playlist::ChooseStreamFromPlaylist(QString::fromLocal8Bit(body));
    if (address.isEmpty()) {
        cmdRecord->click();
        setLabel(lbStream, TextNoPlaylistStream);
        return;
    }
    setLabel(lbStream, QStringLiteral("Connecting to: ") + address);
    StartRecording(address);
}

void FrmTC::onDownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key != TagRecording || !m_recording)
        return;
    cmdRecord->click();
    setLabel(lbStream,
             QStringLiteral("PLS error: ") + QString::number(statusCode) + QStringLiteral(": ") + statusText);
}

void FrmTC::cmdMonitor_Click()
{
    m_monitorShown = !m_monitorShown;
    cmdMonitor->setChecked(m_monitorShown);
    // The layout's minimum size follows the panel at once, so the resize is
    // not clamped to the old one.
    const int before = height();
    if (m_monitorShown) {
        monitorPanel->show();
        layout()->activate();
        m_monitorGrowth = monitorPanel->sizeHint().height() + MonitorMargin;
        resize(width(), before + m_monitorGrowth);
        tmrUpdate->start();
        tmrUpdate_Timer();
    } else {
        tmrUpdate->stop();
        monitorPanel->hide();
        layout()->activate();
        resize(width(), before - m_monitorGrowth);
    }
}

void FrmTC::btSave_Click()
{
    const QString path = m_hooks.chooseSavePath(this, txtSave->text());
    if (!path.isEmpty())
        txtSave->setText(path);
}

void FrmTC::btShow_Click()
{
    btShow->setText(btShow->text() == CaptionShowHeader ? CaptionShowMetadata : CaptionShowHeader);
    showMeta();
}

void FrmTC::showMeta()
{
    QString text = btShow->text() == CaptionShowHeader ? m_stream.LastText() : m_stream.HeaderText();
    text.remove(QChar(0)); // metadata blocks are padded with zero bytes
    if (txtMeta->toPlainText() != text)
        txtMeta->setPlainText(text);
}

void FrmTC::tmrStats_Timer()
{
    setLabel(lbStore, RecorderStats::StoredSizeText(m_stream.BytesTotal()));
    const std::optional<qint32> elapsed =
        RecorderStats::ElapsedSeconds(m_stream.BytesTotal(), m_stream.Bitrate());
    if (elapsed)
        setLabel(lbTime, RecorderStats::MakeTime(*elapsed));
    setLabel(lbBitrate, m_stream.Bitrate() > 0
                            ? QString::number(m_stream.Bitrate()) + QStringLiteral(" kbit/s")
                            : QString());
    setLabel(lbPackets, QString::number(m_stream.MetaBlocks()) + QStringLiteral(" blocks"));
    if (m_recording)
        showLimitProgress(m_output.BytesWritten(), elapsed);
}

void FrmTC::showLimitProgress(double bytesWritten, std::optional<qint32> elapsed)
{
    const int selected = optBreak[0]->isChecked() ? 0 : optBreak[1]->isChecked() ? 1 : -1;
    if (selected < 0)
        return;
    const double limit = Convert::LeadingNumber(txtBreak[selected]->text());
    const auto kind = selected == 0 ? RecorderStats::Limit::Minutes : RecorderStats::Limit::Megabytes;
    const std::optional<int> percent = RecorderStats::LimitProgress(kind, limit, elapsed, bytesWritten);
    if (!percent)
        return;
    setBar(Bar, *percent);
    if (RecorderStats::LimitReached(percent, limit))
        FinishRecording();
}

void FrmTC::tmrUpdate_Timer()
{
    setLabel(lbBuffer_Current, RecorderStats::BytesText(double(m_stream.ReceiveBufferLength())));
    setLabel(lbBuffer_Peak, RecorderStats::BytesText(m_stream.PeakBuffer()));
    if (const auto percent =
            RecorderStats::BufferBarPercent(m_stream.ReceiveBufferLength(), m_stream.PeakBuffer()))
        setBar(Bar_Buffer, *percent);
    setLabel(lbPacket_Size, RecorderStats::BytesText(m_stream.AveragePacket()));
    setLabel(lbPacket_Max, RecorderStats::BytesText(m_stream.LargestPacket()));
    setLabel(lbDCache, RecorderStats::DiskCacheText(m_output.DiskCache().size()));
    setBar(Bar_Cache, RecorderStats::CacheBarPercent(m_output.DiskCache().size()));
    setLabel(lbSyncStat, RecorderStats::SyncStatText(m_stream.DiscardedBytes(), m_stream.ResyncCount()));
    setLabel(lbRealBytes, RecorderStats::BytesText(m_output.BytesWritten()));
    setLabel(lbBlock_Writes, QString::number(m_output.BlockWrites()));
    const bool valid = IcyStream::IsCleanText(m_stream.LastText());
    lbValid->setVisible(valid);
    lbInvalid->setVisible(!valid);
    lbSync->setVisible(m_stream.ResyncState() == 0);
    showMeta();
}

void FrmTC::tmrLaunch_Timer()
{
    tmrLaunch->stop();
    cmdRecord->click();
}

void FrmTC::FinishRecording()
{
    // The output is complete before any power action.
    if (m_recording)
        cmdRecord->click();
    if (ChkShutDown->isChecked()) {
        modShutdown::ExitWindows(m_power, modShutdown::ExitPowerOff, true);
        close();
    } else if (ChkHibernate->isChecked()) {
        modShutdown::Suspend(m_power, true, true, false);
    } else if (m_state.LaunchMode) {
        close();
    }
}

void FrmTC::closeEvent(QCloseEvent *event)
{
    if (m_recording)
        cmdRecord->click();
    event->accept();
    emit unloaded();
}

QString FrmTC::ShownTitle() const
{
    return lbSong->text();
}

void FrmTC::ShowTitle(const QString &title)
{
    lbSong->setText(title);
}

void FrmTC::ShowStreamText(const QString &text)
{
    lbStream->setText(text);
}

void FrmTC::ShowGenre(const QString &genre)
{
    lbGenre->setText(genre);
}

void FrmTC::SetHyperlinkA(const QString &url)
{
    lnkStation->setText(linkText(url));
}

void FrmTC::SetHyperlinkB(const QString &url)
{
    lnkStream->setText(linkText(url));
}

QString FrmTC::ScanSongText() const
{
    return txtScanSong->text();
}

void FrmTC::ShowWaitScan(bool visible)
{
    lblWaitScan->setVisible(visible);
}

void FrmTC::SetWriteEnabled(bool enabled)
{
    m_output.SetWriteEnabled(enabled);
}

void FrmTC::WriteToDisk(QByteArrayView data, bool flush)
{
    m_output.WriteToDisk(data, flush);
}

void FrmTC::NewSong(const QString &title)
{
    m_output.NewSong(title, chkSingleSong->isChecked(), BuildFileName());
}

bool FrmTC::IsFileOpen() const
{
    return m_output.IsFileOpen();
}

void FrmTC::SwitchToContinuous()
{
    chkSingleSong->setChecked(false);
    m_output.SwitchToContinuous();
}
