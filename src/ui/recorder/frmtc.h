#pragma once

#include "ui/recorder/frmtccontrols.h"
#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/recordingoutput.h"
#include "recorder/streamconnection.h"

#include <QDateTime>
#include <QWidget>

#include <functional>
#include <optional>

class FileDL;
struct LaunchOptions;
class PowerControl;
class Prompt;
struct RecordingInputs;
class QTimer;

// The recorder window: records one station stream at a time to MP3 files,
// started by hand or by a launch command line. It wires its controls to the
// connection (StreamConnection), the stream parser (IcyStream) and the output
// stage (RecordingOutput) and shows what they report. Everything runs on the
// UI thread.
class FrmTC : public QWidget, private FrmTCControls, private IcyStreamHost
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmTC)

public:
    // What the window asks of the world besides the state it is given: the
    // clock that names files, the save dialog of btSave (the current template
    // in, the chosen path out, empty when cancelled), the connection's stall
    // time and reconnection pauses, and how cmdSchedule registers a task (the
    // window's inputs, its clock and itself as the owner of the task dialog).
    struct Hooks
    {
        std::function<QDateTime()> now;
        std::function<QString(QWidget *parent, const QString &current)> chooseSavePath;
        std::function<void(const RecordingInputs &, const std::function<QDateTime()> &now, QWidget *owner)>
            schedule;
        StreamConnection::Timing connection;
    };

    using FrmTCControls::CaptionRecord;
    using FrmTCControls::CaptionShowHeader;
    using FrmTCControls::CaptionShowMetadata;
    static inline const QString CaptionStop = QStringLiteral("Stop");
    static inline const QString OverwriteQuestion =
        QStringLiteral("Warning! This file already exists. Overwrite it?");
    static inline const QString TextNoPlaylistStream = QStringLiteral("PLS contains no valid stream url");
    static inline const QString TagRecording = QStringLiteral("PLSREC");
    // Scheme and host of the playlist service in place of the built-in one
    // (a mirror, or a test server).
    static constexpr auto PlaylistServiceVariable = "TUNECATCH_PLAYLIST_SERVICE";

    FrmTC(Prompt &prompt, const LaunchOptions &launch, PowerControl &power, QWidget *parent = nullptr,
          Hooks hooks = {});
    ~FrmTC() override;

    bool Recording() const { return m_recording; }
    // The parts of a recording, for whoever watches one.
    const IcyStream &Stream() const { return m_stream; }
    const RecordingOutput &Output() const { return m_output; }
    const StreamConnection &Connection() const { return *m_connection; }

    void SetMode(bool enabled);
    // Starts connecting to the address; false when it cannot be parsed (the
    // label says why). The connection reports the rest.
    bool StartStream(const QString &address);
    // Parses and flushes what is left in the receive buffer, closes the
    // connection, Cleanup.
    void EndStream();
    void StartRecording(const QString &address);
    void FetchPlaylist(const QString &address, const QString &tag);
    // A limit has been reached: stop, then power off, hibernate or close.
    void FinishRecording();

signals:
    // The window is unloading; in launch mode this ends the program.
    void unloaded();
    // cmdStations: the user wants the station list.
    void stationsRequested();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    // IcyStreamHost: the parser reads and sets the window's labels and
    // drives the output stage through these.
    QString ShownTitle() const override;
    void ShowTitle(const QString &title) override;
    void ShowStreamText(const QString &text) override;
    void ShowGenre(const QString &genre) override;
    void SetHyperlinkA(const QString &url) override;
    void SetHyperlinkB(const QString &url) override;
    QString ScanSongText() const override;
    void ShowWaitScan(bool visible) override;
    void SetWriteEnabled(bool enabled) override;
    void WriteToDisk(QByteArrayView data, bool flush) override;
    void NewSong(const QString &title) override;
    bool IsFileOpen() const override;
    void SwitchToContinuous() override;

    void wireControls();
    void load();

    void cmdRecord_Click();
    void cmdMonitor_Toggled(bool shown);
    void cmdSchedule_Click();
    void btSave_Click();
    void tmrStats_Timer();
    void tmrLaunch_Timer();
    void onStreamData(const QByteArray &bytes);
    void onStreamInterrupted();
    void onDownloadComplete(const QString &key, const QByteArray &body);
    void onDownloadError(const QString &key, int statusCode, const QString &statusText);

    // The recording cannot go on: stop with what was received written, say
    // why, and in launch mode end as a reached limit does.
    void stopWithFailure(const QString &reason);
    // After data went through the parser: a stream or output that failed ends the recording.
    void checkFailures();
    bool StopOverwrite();
    QString BuildFileName() const;
    void Cleanup();
    void showLimitProgress(double bytesWritten, std::optional<qint32> elapsed);

    Prompt &m_prompt;
    const LaunchOptions &m_launch;
    PowerControl &m_power;
    Hooks m_hooks;

    IcyStream m_stream;
    RecordingOutput m_output;
    StreamConnection *m_connection = nullptr;
    bool m_recording = false;
    bool m_monitorShown = false;
    int m_monitorGrowth = 0;

    FileDL *m_fileDL = nullptr;
    QTimer *tmrStats = nullptr;
    QTimer *tmrUpdate = nullptr;
    QTimer *tmrLaunch = nullptr;
};
