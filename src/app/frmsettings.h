#pragma once

#include <QDialog>

class AppState;
class QLineEdit;
class QPushButton;

// The settings dialog: the command line of the external MP3 trimming tool.
class FrmSettings : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmSettings)

public:
    FrmSettings(AppState &state, QWidget *parent = nullptr);

private:
    void cmdOk_Click();
    void cmdSearch_Click();

    AppState &m_state;
    QLineEdit *m_txtTrimMP3;
};
