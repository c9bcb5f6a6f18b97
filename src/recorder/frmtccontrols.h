#pragma once

#include <QString>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QWidget;

// The recorder window's controls and their layout, kept apart from what the
// window does with them. Every control carries its design name as objectName;
// every field and value is tied to its caption (a buddy) or named for
// assistive tools where it has none.
class FrmTCControls
{
public:
    static inline const QString CaptionRecord = QStringLiteral("Record");
    static inline const QString CaptionShowHeader = QStringLiteral("Show Header");

    // Builds the controls into the window; the monitor panel starts hidden.
    void setupControls(QWidget *window);

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

private:
    QWidget *buildInputs();
    QWidget *buildStatus();
    QWidget *buildMonitor();
};
