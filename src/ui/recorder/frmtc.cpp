#include "ui/recorder/frmtc.h"

#include "base/appinfo.h"
#include "base/launchoptions.h"
#include "base/settingsstore.h"
#include "controls/roundedframe.h"
#include "recorder/launchswitches.h"
#include "recorder/recordingsummary.h"
#include "schedule/recordingscheduler.h"
#include "ui/windowplacement.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTimer>

namespace {

// The statistics refresh every half second; the monitor refreshes faster.
constexpr int StatsInterval = 500;
constexpr int UpdateInterval = 250;
constexpr int LaunchDelay = 300;

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
    : QWidget(parent, Qt::Window), m_launch(launch), m_hooks(std::move(hooks))
{
    if (!m_hooks.now)
        m_hooks.now = [] { return QDateTime::currentDateTime(); };
    if (!m_hooks.songFiles)
        m_hooks.songFiles = &SongFileOptions::fromStore;
    if (!m_hooks.chooseSavePath) {
        m_hooks.chooseSavePath = [](QWidget *owner, const QString &current) {
            return QFileDialog::getSaveFileName(owner, tr("Stream Save Location"), current,
                                                tr("Audio File (*.mp3 *.aac *.ogg)"));
        };
    }
    setObjectName(QStringLiteral("FrmTC"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(AppInfo::title + tr(" - Recorder"));

    m_recorder =
        new StreamRecorder(prompt, power, {m_launch.launchMode, m_hooks.now, m_hooks.connection}, this);
    tmrStats = timer(this, QStringLiteral("tmrStats"), StatsInterval);
    tmrUpdate = timer(this, QStringLiteral("tmrUpdate"), UpdateInterval);
    tmrLaunch = timer(this, QStringLiteral("tmrLaunch"), LaunchDelay);

    setupControls(this);
    wireControls();
    wireRecorder();
    load();
}

FrmTC::~FrmTC()
{
    // The recorder outlives this part of the object and completes its file
    // when it goes: nothing of that may reach the window.
    m_recorder->disconnect(this);
}

QString FrmTC::captionStop()
{
    return tr("Stop");
}

void FrmTC::wireControls()
{
    connect(cmdRecord, &QPushButton::clicked, this, &FrmTC::cmdRecordClick);
    // Toggled, not clicked: assistive tools toggle a checkable button.
    connect(cmdMonitor, &QPushButton::toggled, this, &FrmTC::cmdMonitorToggled);
    connect(cmdSchedule, &QPushButton::clicked, this, &FrmTC::cmdScheduleClick);
    connect(cmdStations, &QPushButton::clicked, this, &FrmTC::stationsRequested);
    connect(btSave, &QPushButton::clicked, this, &FrmTC::btSaveClick);
    connect(btShow, &QPushButton::clicked, this, [this] { switchMetaView(m_recorder->counters()); });
    // At most one power action: checking one box clears the other.
    connect(ChkHibernate, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            ChkShutDown->setChecked(false);
        handOverSettings();
    });
    connect(ChkShutDown, &QCheckBox::toggled, this, [this](bool on) {
        if (on)
            ChkHibernate->setChecked(false);
        handOverSettings();
    });
    connect(chkSingleSong, &QCheckBox::toggled, this, &FrmTC::handOverSettings);
    connect(txtScanSong, &QLineEdit::textChanged, this, &FrmTC::handOverSettings);
    connect(tmrStats, &QTimer::timeout, this, [this] {
        showStatistics(m_recorder->counters());
        // Learnt while recording; otherwise it changes only with the station.
        if (m_recorder->Recording())
            showTitleDelay();
    });
    connect(txtStream, &QLineEdit::textChanged, this, &FrmTC::showTitleDelay);
    connect(btDelaySet, &QPushButton::clicked, this, [this] {
        showTitleDelay();
        m_recorder->setTitleDelay(txtDelay->value());
        showTitleDelay();
    });
    connect(btDelayReset, &QPushButton::clicked, this, [this] {
        showTitleDelay();
        m_recorder->resetTitleDelay();
        showTitleDelay();
    });
    connect(tmrUpdate, &QTimer::timeout, this, [this] { showMonitor(m_recorder->counters()); });
    connect(tmrLaunch, &QTimer::timeout, this, &FrmTC::tmrLaunchTick);
    connect(lnkFolder, &QLabel::linkActivated, this, [this] { m_hooks.openFolder(m_writtenFolder); });
}

void FrmTC::wireRecorder()
{
    const StreamRecorder *r = m_recorder;
    connect(r, &StreamRecorder::started, this, [this] {
        cmdRecord->setText(captionStop());
        SetMode(false);
        m_running.start();
        showWritten({}, false);
    });
    connect(r, &StreamRecorder::stopped, this, [this] {
        SetMode(true);
        cmdRecord->setText(captionRecord());
        showSummary();
        showTitleDelay();
    });
    connect(r, &StreamRecorder::statusChanged, this,
            [this](const QString &text) { setLabel(lbStream, text); });
    connect(r, &StreamRecorder::stationNameChanged, this,
            [this](const QString &name) { lbStream->setText(name); });
    connect(r, &StreamRecorder::titleChanged, this, [this](const QString &title) { lbSong->setText(title); });
    connect(r, &StreamRecorder::genreChanged, this,
            [this](const QString &genre) { lbGenre->setText(genre); });
    connect(r, &StreamRecorder::stationLinkChanged, this,
            [this](const QString &url) { lnkStation->setText(linkText(url)); });
    connect(r, &StreamRecorder::songLinkChanged, this,
            [this](const QString &url) { lnkStream->setText(linkText(url)); });
    connect(r, &StreamRecorder::waitingForSong, this,
            [this](bool waiting) { lblWaitScan->setVisible(waiting); });
    connect(r, &StreamRecorder::switchedToContinuous, this, [this] { chkSingleSong->setChecked(false); });
    connect(r, &StreamRecorder::limitProgress, this, [this](int percent) { setBar(Bar, percent); });
    connect(r, &StreamRecorder::finished, this, &QWidget::close);
}

void FrmTC::load()
{
    m_monitorShown = false;
    // As tall as its details, on the screen; then as the user left the last one.
    fitToContent(true);
    if (!m_launch.launchMode && SettingsStore::getSetting(SettingsStore::RecorderMonitor) == u"1")
        cmdMonitor->setChecked(true);
    WindowPlacement::restore(*this, SettingsStore::RecorderWindow);
    if (m_launch.launchMode) {
        cmdStations->setEnabled(false);
        applyLaunchSwitches(ParseLaunchSwitches(m_launch.commandArg), this);
    }
    if (txtSave->text().isEmpty())
        txtSave->setText(DefaultSaveTemplate);
    handOverSettings();
    showTitleDelay();
    tmrStats->start();
    if (m_launch.launchMode)
        tmrLaunch->start();
}

void FrmTC::handOverSettings()
{
    RecordingSettings settings = recordingSettings();
    settings.songFiles = m_hooks.songFiles();
    m_recorder->setSettings(settings);
}

void FrmTC::showTitleDelay()
{
    // The station typed in counts until a recording starts.
    if (!m_recorder->Recording())
        handOverSettings();
    setLabel(lbDelay, m_recorder->titleDelayText());
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

void FrmTC::cmdRecordClick()
{
    if (m_recorder->Recording()) {
        m_recorder->stop();
        return;
    }
    handOverSettings();
    m_recorder->start();
}

// The recording as set up here, repeated by a task an hour from now.
void FrmTC::cmdScheduleClick()
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


void FrmTC::cmdMonitorToggled(bool shown)
{
    m_monitorShown = shown;
    if (m_monitorShown) {
        m_monitorPanel->show();
        fitToContent(true);
        tmrUpdate->start();
        showMonitor(m_recorder->counters());
    } else {
        tmrUpdate->stop();
        m_monitorPanel->hide();
        fitToContent(false);
    }
}

void FrmTC::fitToContent(bool grow)
{
    // The scroll area's layout is settled first, or the room it has is stale.
    layout()->activate();
    m_scroll->widget()->layout()->activate();
    const int missing = missingHeight();
    resize(width(), height() + (grow ? qMax(0, missing) : qMin(0, missing)));
    WindowPlacement::keepInside(*this);
}

void FrmTC::btSaveClick()
{
    const QString path = m_hooks.chooseSavePath(this, txtSave->text());
    if (!path.isEmpty())
        txtSave->setText(path);
}

void FrmTC::showSummary()
{
    // The audio's own length where the bit rate tells it; else the time it ran.
    const RecorderStats::Counters counters = m_recorder->counters();
    const qint64 seconds = RecorderStats::elapsedSeconds(counters.bytesTotal, counters.bitrate)
                               .value_or(m_running.elapsed() / 1000);
    const RecordingSummary summary = RecordingSummary::of(m_recorder->output().files(), seconds);
    m_writtenFolder = summary.folder;
    showWritten(summary.text(), !m_writtenFolder.isEmpty() && m_hooks.openFolder);
}

void FrmTC::tmrLaunchTick()
{
    tmrLaunch->stop();
    cmdRecord->click();
}

void FrmTC::closeEvent(QCloseEvent *event)
{
    WindowPlacement::save(*this, SettingsStore::RecorderWindow);
    SettingsStore::saveSetting(SettingsStore::RecorderMonitor,
                               cmdMonitor->isChecked() ? QStringLiteral("1") : QStringLiteral("0"));
    if (m_recorder->Recording())
        cmdRecord->click();
    event->accept();
    emit unloaded();
}
