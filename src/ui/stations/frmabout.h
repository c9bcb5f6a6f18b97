#pragma once

#include <QDialog>

class Shell;

// The about box: what the program is, its version, and where it keeps the
// user's files, as paths that open in the file manager.
class frmAbout : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(frmAbout)

public:
    explicit frmAbout(Shell &shell, QWidget *parent = nullptr);
};
