#pragma once

#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"
#include "recorder/recordingoutput.h"
#include "schedule/schedulingsetup.h"

#include <QDateTime>
#include <QWidget>

#include <functional>

class AppState;
class FileDL;
class PowerControl;
class QCheckBox;
class QEventLoop;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QTcpSocket;
class QTimer;

// The recorder window: records one station stream at a time to MP3 files,
// started by hand or by a launch command line. Everything runs on the UI
// thread: socket, download and timer events drive the stream parser
// (IcyStream) and the output stage (RecordingOutput).
class FrmTC : public QWidget, private IcyStreamHost
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmTC)

public:
    // What the window asks of the world besides the state it is given: the
    // clock that names files, the save dialog of btSave (the current
    // template in, the chosen path out, empty when cancelled), and where
    // cmdSchedule registers its tasks.
    struct Hooks
    {
        std::function<QDateTime()> now;
        std::function<QString(QWidget *parent, const QString &current)> chooseSavePath;
        SchedulingSetup scheduling;
    };

    static inline const QString CaptionRecord = QStringLiteral("Record");
    static inline const QString CaptionStop = QStringLiteral("Stop");
    static inline const QString CaptionShowHeader = QStringLiteral("Show Header");
    static inline const QString CaptionShowMetadata = QStringLiteral("Show Metadata");
    static inline const QString OverwriteQuestion =
        QStringLiteral("Warning! This file already exists. Overwrite it?");
    static inline const QString TextNoConnection =
        QStringLiteral("Unable to create connection to Radio Station.");
    static inline const QString TextNotAccepting =
        QStringLiteral("Radio Station does not accept connections at the moment.");
    static inline const QString TextClosedByStation = QStringLiteral("Radio Station closed the connection.");
    static inline const QString TextNoPlaylistStream = QStringLiteral("PLS contains no valid stream url");
    static inline const QString TagRecording = QStringLiteral("PLSREC");

    FrmTC(AppState &state, PowerControl &power, QWidget *parent = nullptr, Hooks hooks = {});
    ~FrmTC() override;

    bool Recording() const { return m_recording; }
    // The stream parser and output stage, for whoever watches a recording.
    const IcyStream &Stream() const { return m_stream; }
    const RecordingOutput &Output() const { return m_output; }

    void SetMode(bool enabled);
    // Connects to the address and sends the request; true once it is sent.
    // Waits for the connection on a local event loop, so other events
    // (a Stop click among them) run meanwhile.
    bool StartStream(const QString &address);
    // Flushes what is left in the receive buffer, closes the socket, Cleanup.
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
    enum class ConnectOutcome
    {
        Waiting,
        Connected,
        Failed,
        PeerClosed,
        Abandoned
    };

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

    void buildControls();
    QWidget *buildInputs();
    QWidget *buildStatus();
    QWidget *buildMonitor();
    void wireControls();
    void load();
    void applyLaunchSwitches();

    void cmdRecord_Click();
    void cmdMonitor_Click();
    void cmdSchedule_Click();
    void btSave_Click();
    void btShow_Click();
    void tmrStats_Timer();
    void tmrUpdate_Timer();
    void tmrLaunch_Timer();
    void onSocketData();
    void onSocketClosed();
    void onDownloadComplete(const QString &key, const QByteArray &body);
    void onDownloadError(const QString &key, int statusCode, const QString &statusText);

    ConnectOutcome waitForConnection();
    bool StopOverwrite();
    QString BuildFileName() const;
    void Cleanup();
    void showMeta();
    void showLimitProgress(double bytesWritten, std::optional<qint32> elapsed);

    AppState &m_state;
    PowerControl &m_power;
    Hooks m_hooks;

    IcyStream m_stream;
    RecordingOutput m_output;
    bool m_recording = false;
    bool m_monitorShown = false;
    int m_monitorGrowth = 0;
    // Which start attempt is current: a Stop during a connect wait makes the
    // waiting attempt stale.
    quint32 m_attempt = 0;
    QEventLoop *m_connectWait = nullptr;

    QTcpSocket *WS = nullptr;
    FileDL *m_fileDL = nullptr;
    QTimer *tmrStats = nullptr;
    QTimer *tmrUpdate = nullptr;
    QTimer *tmrLaunch = nullptr;

    QLineEdit *txtStream = nullptr;
    QLabel *LblStation = nullptr;
    QLineEdit *txtSave = nullptr;
    QPushButton *btSave = nullptr;
    QCheckBox *chkSingleSong = nullptr;
    QRadioButton *optBreak[2] = {};
    QLineEdit *txtBreak[2] = {};
    QCheckBox *ChkHibernate = nullptr;
    QCheckBox *ChkShutDown = nullptr;
    QLineEdit *txtScanSong = nullptr;
    QLabel *lblWaitScan = nullptr;

    QLabel *lbStream = nullptr;
    QLabel *lbSong = nullptr;
    QLabel *lbGenre = nullptr;
    QLabel *lnkStation = nullptr;
    QLabel *lnkStream = nullptr;
    QLabel *lbStore = nullptr;
    QLabel *lbTime = nullptr;
    QLabel *lbBitrate = nullptr;
    QLabel *lbPackets = nullptr;
    QProgressBar *Bar = nullptr;

    QPushButton *cmdRecord = nullptr;
    QPushButton *cmdMonitor = nullptr;
    QPushButton *cmdStations = nullptr;
    QPushButton *cmdSchedule = nullptr;

    QGroupBox *monitorPanel = nullptr;
    QLabel *lbBuffer_Current = nullptr;
    QLabel *lbBuffer_Peak = nullptr;
    QProgressBar *Bar_Buffer = nullptr;
    QLabel *lbPacket_Size = nullptr;
    QLabel *lbPacket_Max = nullptr;
    QLabel *lbDCache = nullptr;
    QProgressBar *Bar_Cache = nullptr;
    QLabel *lbSyncStat = nullptr;
    QLabel *lbRealBytes = nullptr;
    QLabel *lbBlock_Writes = nullptr;
    QLabel *lbValid = nullptr;
    QLabel *lbInvalid = nullptr;
    QLabel *lbSync = nullptr;
    QPushButton *btShow = nullptr;
    QPlainTextEdit *txtMeta = nullptr;
};
