#pragma once

#include <QDialog>

struct TrimTool;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

// The settings dialog: the command line of the external MP3 trimming tool,
// the station directory's server and whether a notification tells each new song.
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
};
