#pragma once

#include <QDialog>

struct TrimTool;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

// The settings dialog: the command line of the external MP3 trimming tool,
// the station directory's server, whether a notification tells each new song,
// what song files carry (tags) and what becomes of partial ones.
class FrmSettings : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmSettings)

public:
    explicit FrmSettings(TrimTool &trimTool, QWidget *parent = nullptr);

    // The stored choice for song notifications: off unless turned on.
    static bool songNotifications();

private:
    void cmdOkClick();
    void cmdSearchClick();

    TrimTool &m_trimTool;
    QLineEdit *m_txtTrimMP3;
    QCheckBox *m_chkSongNotifications;
    QLineEdit *m_txtDirectoryServer;
    QLabel *m_lblServerError;
    QCheckBox *m_chkWriteTags;
    QComboBox *m_cboPartialSongs;
    QCheckBox *m_chkQuietCut;
};
