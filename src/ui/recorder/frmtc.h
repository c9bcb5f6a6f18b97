#pragma once

#include "recorder/streamrecorder.h"
#include "ui/recorder/frmtccontrols.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QWidget>

#include <functional>

struct LaunchOptions;
class PowerControl;
class Prompt;
struct RecordingInputs;
class QTimer;

// The recorder window: records one station stream at a time, started by hand
// or by a launch command line. The recording itself is a StreamRecorder; the
// window hands it the settings of its inputs, starts and stops it, and shows
// what it reports. Everything runs on the UI thread.
class FrmTC : public QWidget, private FrmTCControls
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmTC)

public:
    // What the window asks of the world besides the state it is given: the
    // clock that names files, the save dialog of btSave (the current template
    // in, the chosen path out, empty when cancelled), the connection's stall
    // time and reconnection pauses, how cmdSchedule registers a task (the
    // window's inputs, its clock and itself as the owner of the task dialog),
    // what the settings say about song files (the settings store when not
    // given), and how the folder of the files written is opened.
    struct Hooks
    {
        std::function<QDateTime()> now;
        std::function<SongFileOptions()> songFiles;
        std::function<QString(QWidget *parent, const QString &current)> chooseSavePath;
        std::function<void(const RecordingInputs &, const std::function<QDateTime()> &now, QWidget *owner)>
            schedule;
        StreamConnection::Timing connection;
        std::function<void(const QString &folder)> openFolder;
    };

    using FrmTCControls::captionRecord;
    using FrmTCControls::captionShowHeader;
    using FrmTCControls::captionShowMetadata;
    static QString captionStop();

    FrmTC(Prompt &prompt, const LaunchOptions &launch, PowerControl &power, QWidget *parent = nullptr,
          Hooks hooks = {});
    ~FrmTC() override;

    const StreamRecorder &recorder() const { return *m_recorder; }
    bool Recording() const { return m_recorder->Recording(); }
    const IcyStream &stream() const { return m_recorder->stream(); }
    const RecordingOutput &output() const { return m_recorder->output(); }

    void SetMode(bool enabled);

signals:
    // The window is unloading; in launch mode this ends the program.
    void unloaded();
    // cmdStations: the user wants the station list.
    void stationsRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void wireControls();
    void wireRecorder();
    void load();
    // The inputs the recording reads while it runs go over as they change.
    void handOverSettings();
    // lbDelay: the title delay of the station recorded, or to be.
    void showTitleDelay();

    void cmdRecordClick();
    void cmdMonitorToggled(bool shown);
    // Taller (grow) as far as the details above the buttons need and the
    // screen allows, or shorter by the room they leave spare.
    void fitToContent(bool grow);
    void cmdScheduleClick();
    void btSaveClick();
    void tmrLaunchTick();
    // What the recording that stopped wrote, and where.
    void showSummary();

    const LaunchOptions &m_launch;
    Hooks m_hooks;
    StreamRecorder *m_recorder = nullptr;
    QElapsedTimer m_running;
    QString m_writtenFolder;
    bool m_monitorShown = false;

    QTimer *tmrStats = nullptr;
    QTimer *tmrUpdate = nullptr;
    QTimer *tmrLaunch = nullptr;
};
