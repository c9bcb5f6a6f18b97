#pragma once

#include "recorder/recorderstats.h"

#include <QCoreApplication>
#include <QList>
#include <QString>

class QCheckBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class RoundedFrame;
class QPushButton;
class QRadioButton;
class QScrollArea;
class QWidget;
struct LaunchSwitches;
struct RecordingSettings;

// The recorder window's controls, their layout and how they show a recording,
// kept apart from what the window does with them. Every control carries its
// design name as objectName; every field and value is tied to its caption (a
// buddy) or named for assistive tools where it has none. Labels and bars are
// written only when their content changes, so nothing flickers.
class FrmTCControls
{
    Q_DECLARE_TR_FUNCTIONS(FrmTCControls)

public:
    static QString captionRecord();
    static QString captionShowHeader();
    static QString captionShowMetadata();

    // Builds the controls into the window; the monitor panel starts hidden.
    void setupControls(QWidget *window);
    // The line of what a recording wrote, with its caption and the folder
    // link; an empty summary hides them.
    void showWritten(const QString &summary, bool folderLink);
    // How much taller the details above the buttons are than their room;
    // below 0 when they have room to spare.
    int missingHeight() const;
    // Fills the inputs from a launch command line; "-m" clicks cmdMonitor and
    // "-v" minimises the window.
    void applyLaunchSwitches(const LaunchSwitches &switches, QWidget *window);

    // The inputs as the recording reads them.
    RecordingSettings recordingSettings() const;

    // tmrStats: stored size, time, bit rate and blocks.
    void showStatistics(const RecorderStats::Counters &counters);
    // tmrUpdate: the monitor panel.
    void showMonitor(const RecorderStats::Counters &counters);
    // btShow: switches txtMeta between the header and the latest metadata.
    void switchMetaView(const RecorderStats::Counters &counters);

    static void setLabel(QLabel *label, const QString &text);
    static void setBar(QProgressBar *bar, int value);

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
    // After a recording: what it wrote, and the link to the folder.
    QLabel *lblSummary = nullptr;
    QLabel *lnkFolder = nullptr;
    QList<QWidget *> m_written; // the caption and the line
    QProgressBar *Bar = nullptr;
    // The station's title delay, and setting it by hand or resetting it.
    QLabel *lbDelay = nullptr;
    QDoubleSpinBox *txtDelay = nullptr;
    QPushButton *btDelaySet = nullptr;
    QPushButton *btDelayReset = nullptr;

    QPushButton *cmdRecord = nullptr;
    QPushButton *cmdMonitor = nullptr;
    QPushButton *cmdStations = nullptr;
    QPushButton *cmdSchedule = nullptr;

    RoundedFrame *m_monitorPanel = nullptr;
    QScrollArea *m_scroll = nullptr;
    QLabel *lbBuffer_Current = nullptr;
    QLabel *lbBuffer_Peak = nullptr;
    QProgressBar *Bar_Buffer = nullptr;
    QLabel *lbPacket_Size = nullptr;
    QLabel *lbPacket_Max = nullptr;
    QLabel *lbDCache = nullptr;
    QProgressBar *Bar_Cache = nullptr;
    QLabel *lbCutHeld = nullptr;
    QLabel *lbSyncStat = nullptr;
    QLabel *lbRealBytes = nullptr;
    QLabel *lbBlock_Writes = nullptr;
    QLabel *lbValid = nullptr;
    QLabel *lbInvalid = nullptr;
    QLabel *lbSync = nullptr;
    QPushButton *btShow = nullptr;
    QPlainTextEdit *txtMeta = nullptr;

private:
    void showMeta(const RecorderStats::Counters &counters);
    QWidget *buildInputs();
    QWidget *buildStatus();
    QWidget *buildMonitor();
};
