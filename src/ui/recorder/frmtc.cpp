#include "ui/recorder/frmtc.h"

#include "base/apperror.h"
#include "base/apppaths.h"
#include "base/appinfo.h"
#include "base/launchoptions.h"
#include "base/conversions.h"
#include "base/prompt.h"
#include "catalogue/filedl.h"
#include "catalogue/playlist.h"
#include "controls/roundedframe.h"
#include "recorder/launchswitches.h"
#include "recorder/modshutdown.h"
#include "recorder/recorderstats.h"
#include "recorder/streamaddress.h"
#include "schedule/recordingscheduler.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>

namespace {

// The statistics timer also checks the stop limit; the monitor refreshes faster.
constexpr int StatsInterval = 500;
constexpr int UpdateInterval = 250;
constexpr int LaunchDelay = 300;
// Extra height, beyond the panel's own, that opening the monitor adds.
constexpr int MonitorMargin = 12;

QString linkText(const QString &url)
{
    if (url.isEmpty())
        return {};
    const QString escaped = url.toHtmlEscaped();
    return QStringLiteral("<a href=\"") + escaped + QStringLiteral("\">") + escaped + QStringLiteral("</a>");
}

QTimer *timer(QObject *owner, const QString &name, int interval)
{
    auto *t = new QTimer(owner);
    t->setObjectName(name);
    t->setInterval(interval);
    return t;
}

} // namespace

FrmTC::FrmTC(Prompt &prompt, const LaunchOptions &launch, PowerControl &power, QWidget *parent, Hooks hooks)
    : QWidget(parent, Qt::Window), m_prompt(prompt), m_launch(launch), m_power(power), m_hooks(std::move(hooks)), m_stream(*this)
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
    setWindowTitle(AppInfo::title + QStringLiteral(" - Recorder"));

    m_connection = new StreamConnection(m_hooks.connection, this);
    m_fileDL = new FileDL(this);
    m_fileDL->setObjectName(QStringLiteral("FileDL"));
    tmrStats = timer(this, QStringLiteral("tmrStats"), StatsInterval);
    tmrUpdate = timer(this, QStringLiteral("tmrUpdate"), UpdateInterval);
    tmrLaunch = timer(this, QStringLiteral("tmrLaunch"), LaunchDelay);

    setupControls(this);
    wireControls();
    load();
}

FrmTC::~FrmTC()
{
    // A window destroyed without being closed still completes its file; the
    // connection outlives this part of the object, so it must not call back.
    m_connection->disconnect(this);
    if (m_recording) {
        EndStream();
        m_output.CloseFile();
    }
}

void FrmTC::wireControls()
{
    connect(cmdRecord, &QPushButton::clicked, this, &FrmTC::cmdRecord_Click);
    // Toggled, not clicked: assistive tools toggle a checkable button.
    connect(cmdMonitor, &QPushButton::toggled, this, &FrmTC::cmdMonitor_Toggled);
    connect(cmdSchedule, &QPushButton::clicked, this, &FrmTC::cmdSchedule_Click);
    connect(cmdStations, &QPushButton::clicked, this, &FrmTC::stationsRequested);
    connect(btSave, &QPushButton::clicked, this, &FrmTC::btSave_Click);
    connect(btShow, &QPushButton::clicked, this, [this] { switchMetaView(m_stream); });
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
    connect(tmrUpdate, &QTimer::timeout, this, [this] { showMonitor(m_stream, m_output); });
    connect(tmrLaunch, &QTimer::timeout, this, &FrmTC::tmrLaunch_Timer);
    connect(m_connection, &StreamConnection::statusChanged, this,
            [this](const QString &text) { setLabel(lbStream, text); });
    connect(m_connection, &StreamConnection::dataReceived, this, &FrmTC::onStreamData);
    connect(m_connection, &StreamConnection::interrupted, this, &FrmTC::onStreamInterrupted);
    connect(m_connection, &StreamConnection::failed, this, &FrmTC::stopWithFailure);
    connect(m_fileDL, &FileDL::DownloadComplete, this, &FrmTC::onDownloadComplete);
    connect(m_fileDL, &FileDL::DownloadError, this, &FrmTC::onDownloadError);
}

void FrmTC::load()
{
    m_recording = false;
    m_monitorShown = false;
    if (m_launch.launchMode) {
        cmdStations->setEnabled(false);
        applyLaunchSwitches(ParseLaunchSwitches(m_launch.commandArg), this);
    }
    if (txtSave->text().isEmpty())
        txtSave->setText(DefaultSaveTemplate);
    tmrStats->start();
    if (m_launch.launchMode)
        tmrLaunch->start();
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
        if (!m_output.Error().isEmpty())
            setLabel(lbStream, m_output.Error());
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
    inputs.station = LblStation->text();
    inputs.saveLocation = txtSave->text();
    inputs.streamAddress = txtStream->text();
    inputs.singleSong = chkSingleSong->isChecked();
    inputs.hibernate = ChkHibernate->isChecked();
    inputs.shutDown = ChkShutDown->isChecked();
    inputs.selectedBreak = optBreak[0]->isChecked() ? 0 : optBreak[1]->isChecked() ? 1 : -1;
    inputs.breakValues[0] = txtBreak[0]->text();
    inputs.breakValues[1] = txtBreak[1]->text();
    if (m_hooks.schedule)
        m_hooks.schedule(inputs, m_hooks.now, this);
}

void FrmTC::StartRecording(const QString &address)
{
    const bool singleSong = chkSingleSong->isChecked();
    m_output.ResetCounters();
    m_output.SetFileName(BuildFileName());
    if (!singleSong)
        m_output.RemoveSongPlaceholder();
    if (StopOverwrite())
        return;
    if (!singleSong && !m_output.OpenFile()) {
        stopWithFailure(m_output.Error());
        return;
    }
    if (!StartStream(address))
        stopWithFailure(lbStream->text());
}

QString FrmTC::BuildFileName() const
{
    return ::BuildFileName(txtSave->text(), LblStation->text(), m_hooks.now(), AppPaths::recordingsFolder());
}

bool FrmTC::StopOverwrite()
{
    QFile existing(m_output.FileName());
    if (!existing.open(QIODevice::ReadOnly))
        return false;
    existing.close();
    if (m_launch.launchMode)
        return false;
    return !m_prompt.askYesNo(OverwriteQuestion, AppInfo::title, Prompt::Icon::Warning);
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
    m_stream.Reset();
    m_connection->Open(target);
    return true;
}

void FrmTC::EndStream()
{
    m_connection->Close();
    m_stream.FlushRest();
    Cleanup();
}

// Nothing is held beyond what EndStream has closed; kept as the one place for it.
void FrmTC::Cleanup() {}

void FrmTC::onStreamData(const QByteArray &bytes)
{
    if (!m_recording)
        return;
    m_stream.OnData(bytes);
    checkFailures();
}

void FrmTC::onStreamInterrupted()
{
    if (!m_recording)
        return;
    m_stream.Interrupt();
    checkFailures();
}

void FrmTC::checkFailures()
{
    if (!m_stream.Failure().isEmpty())
        stopWithFailure(m_stream.Failure());
    else if (!m_output.Error().isEmpty())
        stopWithFailure(m_output.Error());
}

void FrmTC::stopWithFailure(const QString &reason)
{
    if (!m_recording)
        return;
    cmdRecord->click();
    setLabel(lbStream, reason);
    // Out of the socket's or the download's call chain: finishing may close the window.
    if (m_launch.launchMode)
        QTimer::singleShot(0, this, &FrmTC::FinishRecording);
}

void FrmTC::FetchPlaylist(const QString &address, const QString &tag)
{
    QString url = address;
    try {
        if (Playlist::isDirectoryReference(address)) {
            url = Playlist::playlistServiceAddress(Playlist::directoryNumber(address));
            const QString service = qEnvironmentVariable(PlaylistServiceVariable);
            if (!service.isEmpty())
                url.replace(0, Playlist::serviceHost.size(), service);
        }
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
    const QString address =
        Playlist::usableAddress(Playlist::chooseStreamFromPlaylist(QString::fromLocal8Bit(body)));
    if (address.isEmpty()) {
        stopWithFailure(TextNoPlaylistStream);
        return;
    }
    setLabel(lbStream, QStringLiteral("Connecting to: ") + address);
    StartRecording(address);
}

void FrmTC::onDownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key != TagRecording)
        return;
    stopWithFailure(QStringLiteral("PLS error: ") + QString::number(statusCode) + QStringLiteral(": ") +
                    statusText);
}

void FrmTC::cmdMonitor_Toggled(bool shown)
{
    m_monitorShown = shown;
    // The layout's minimum size follows the panel at once, so the resize is
    // not clamped to the old one.
    const int before = height();
    if (m_monitorShown) {
        monitorPanel->show();
        layout()->activate();
        m_monitorGrowth = monitorPanel->sizeHint().height() + MonitorMargin;
        resize(width(), before + m_monitorGrowth);
        tmrUpdate->start();
        showMonitor(m_stream, m_output);
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

void FrmTC::tmrStats_Timer()
{
    const std::optional<qint32> elapsed = showStatistics(m_stream);
    if (m_recording)
        showLimitProgress(m_output.BytesWritten(), elapsed);
}

void FrmTC::showLimitProgress(double bytesWritten, std::optional<qint32> elapsed)
{
    const int selected = optBreak[0]->isChecked() ? 0 : optBreak[1]->isChecked() ? 1 : -1;
    if (selected < 0)
        return;
    const double limit = Convert::leadingNumber(txtBreak[selected]->text());
    const auto kind = selected == 0 ? RecorderStats::Limit::Minutes : RecorderStats::Limit::Megabytes;
    const std::optional<int> percent = RecorderStats::LimitProgress(kind, limit, elapsed, bytesWritten);
    if (!percent)
        return;
    setBar(Bar, *percent);
    if (RecorderStats::LimitReached(percent, limit))
        FinishRecording();
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
    } else if (m_launch.launchMode) {
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

void FrmTC::WriteToDisk(QByteArrayView bytes, bool flush)
{
    m_output.WriteToDisk(bytes, flush);
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
