#pragma once

#include <QDialog>

struct TrimTool;
class QLabel;
class QLineEdit;
class QPushButton;

// The settings dialog: the command line of the external MP3 trimming tool
// and the station directory's server.
class FrmSettings : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmSettings)

public:
    explicit FrmSettings(TrimTool &trimTool, QWidget *parent = nullptr);

private:
    void cmdOkClick();
    void cmdSearchClick();

    TrimTool &m_trimTool;
    QLineEdit *m_txtTrimMP3;
    QLineEdit *m_txtDirectoryServer;
    QLabel *m_lblServerError;
};
