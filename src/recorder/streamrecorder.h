#pragma once

#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/recorderstats.h"
#include "recorder/recordingoutput.h"
#include "recorder/songfileoptions.h"
#include "recorder/stopreason.h"
#include "recorder/streamconnection.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <optional>

class FileDL;
class PowerControl;
class Prompt;

// What a recording is asked to do, as the recorder window's inputs say it.
struct RecordingSettings
{
    enum class PowerAction
    {
        None,
        ShutDown,
        Hibernate
    };
    struct StopLimit
    {
        RecorderStats::Limit kind = RecorderStats::Limit::Minutes;
        double value = 0; // minutes or megabytes
    };

    QString address;      // a stream, or a playlist when it holds ".pls"
    QString saveTemplate; // see BuildFileName; its extension follows the stream's format
    QString station;
    bool singleSong = false;
    QString scanSong; // a title to wait for; empty when the scan is off
    std::optional<StopLimit> limit;
    PowerAction powerAction = PowerAction::None;
    SongFileOptions songFiles;
};

// One recording of a station stream at a time: the connection, the stream
// parser, the output stage, the statistics and the stop limit, the playlist
// fetch for playlist addresses and what follows a limit (stop, then the power
// action). It reports through signals and needs no window; the recorder
// window hands it the settings of its inputs and shows what it reports.
// Everything runs on the thread that owns it.
class StreamRecorder : public QObject, private IcyStreamHost
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StreamRecorder)

public:
    // What the recorder uses besides the prompt and the power control: whether
    // the program was launched to record (no overwrite question; a failure ends
    // as a limit does), the clock that names files, and the connection's timing.
    struct Options
    {
        bool launchMode = false;
        std::function<QDateTime()> now;
        StreamTiming connection;
    };

    static inline const QString TagRecording = QStringLiteral("PLSREC");
    // Scheme and host of the playlist service in place of the built-in one
    // (a mirror, or a test server).
    static constexpr auto PlaylistServiceVariable = "TUNECATCH_PLAYLIST_SERVICE";
    // How often the time limit is checked while recording.
    static constexpr int LimitInterval = 500;

    StreamRecorder(Prompt &prompt, PowerControl &power, Options options, QObject *parent = nullptr);
    ~StreamRecorder() override;

    // Read while recording too: the song scan, single-song mode and the power
    // action take a change at once, the rest at the next start.
    void setSettings(const RecordingSettings &settings);
    const RecordingSettings &settings() const { return m_settings; }

    bool Recording() const { return m_recording; }
    // Starts a recording of the settings' address (through its playlist for a
    // playlist address); Recording from here on, until stop. A launched
    // recording without an address, or with a negative stop limit, stops at
    // once (BadSwitches); a limit of 0 means none.
    void start();
    // Ends the recording with everything received written; stopped follows.
    void stop();

    // Starts connecting to the address; false when it cannot be parsed (the
    // status says why). The connection reports the rest.
    bool StartStream(const QString &address);
    // Parses and flushes what is left in the receive buffer, closes the
    // connection, Cleanup.
    void EndStream();
    void StartRecording(const QString &address);
    void FetchPlaylist(const QString &address, const QString &tag);
    // A limit has been reached: stop, then power off, hibernate, or in launch
    // mode report finished.
    void FinishRecording();

    RecorderStats::Counters counters() const;
    // The parts of a recording, for whoever watches one.
    const IcyStream &stream() const { return m_stream; }
    const RecordingOutput &output() const { return m_output; }
    const StreamConnection &connection() const { return *m_connection; }

    // The title delay of the station the settings name (its name, else its
    // address): "Title delay: 2.4 s, learnt". Setting it by hand or resetting
    // it reaches a recording under way at once.
    QString titleDelayText() const;
    void setTitleDelay(double seconds);
    void resetTitleDelay();

signals:
    void started();
    void stopped(const StopReason &reason);
    // The connection's state, or why the recording stopped.
    void statusChanged(const QString &text);
    // The station's own name, from its answer.
    void stationNameChanged(const QString &name);
    void titleChanged(const QString &title);
    void genreChanged(const QString &genre);
    // The station's home page, and the page the station names with a song.
    void stationLinkChanged(const QString &url);
    void songLinkChanged(const QString &url);
    // Whether writing waits for a title holding the scan text.
    void waitingForSong(bool waiting);
    // The station names no song: the rest goes into one file (single-song mode is off).
    void switchedToContinuous();
    // The station's answer said what its stream holds ("MP3", "AAC", "Ogg").
    void formatChanged(const QString &format);
    // Percent of the selected stop limit, while recording.
    void limitProgress(int percent);
    // Nothing is left to do: the power-off request went out, or a launched
    // recording has ended (by its limit or a failure).
    void finished();

private:
    QString shownTitle() const override;
    void showTitle(const QString &title) override;
    void showStreamText(const QString &text) override;
    void showGenre(const QString &genre) override;
    void setHyperlinkA(const QString &url) override;
    void setHyperlinkB(const QString &url) override;
    QString scanSongText() const override;
    void showWaitScan(bool visible) override;
    void setWriteEnabled(bool enabled) override;
    void WriteToDisk(QByteArrayView data, bool flush) override;
    void NewSong(const QString &title) override;
    bool isFileOpen() const override;
    void switchToContinuous() override;

    void showStatus(const QString &text);
    // Tags, cue sheets or partial songs that could not be written: said, the recording goes on.
    void showWarnings();
    void end(StopReason reason);
    // Once the station's answer is in: the output learns the stream's format
    // and a continuous recording opens its file.
    void beginOutput();
    void openContinuous();
    // The template with the extension of the stream's format, expanded at `when`.
    QString fileNameAt(const QDateTime &when) const;
    // The recording cannot go on: stop with what was received written, say
    // why, and in launch mode end as a reached limit does.
    void stopWithFailure(StopReason::Kind kind, const QString &reason);
    // After data went through the parser: a stream or output that failed ends the recording.
    void checkFailures();
    void onStreamData(const QByteArray &bytes);
    void onStreamInterrupted();
    void onConnectionFailed(const QString &reason);
    void onDownloadComplete(const QString &key, const QByteArray &body);
    void onDownloadError(const QString &key, int statusCode, const QString &statusText);
    void checkLimit();
    // The bytes of the files have reached a megabyte limit: checked where they are written.
    bool sizeLimitReached() const;
    bool StopOverwrite();
    void Cleanup();
    // Whose title delay the window shows: the name RecordingOutput learns it under.
    QString delayStation() const;

    Prompt &m_prompt;
    PowerControl &m_power;
    Options m_options;
    RecordingSettings m_settings;

    IcyStream m_stream;
    RecordingOutput m_output;
    StreamConnection *m_connection = nullptr;
    FileDL *m_fileDL = nullptr;
    QTimer m_limitClock;
    // Time since the start, for a minutes limit.
    QElapsedTimer m_clock;
    QDateTime m_startTime;
    QString m_address;
    QString m_title;
    // The last status text: what a failed start stops with.
    QString m_status;
    bool m_recording = false;
    // Whether a stream has come since the start: a connection lost after that dropped.
    bool m_streamCame = false;
    // A size limit was reached: the recording finishes, nothing more is written.
    bool m_limitHit = false;
};
