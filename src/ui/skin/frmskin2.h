#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;

// The skin chooser: a colour theme, and a skin file from the installation
// folder or none. OK, or a click on a skin, stores the theme and closes the
// dialog as accepted; Escape cancels. Whoever opened it applies the choice.
class FrmSkin2 : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrmSkin2)

public:
    // The list's first entry, which turns skinning off.
    static QString noSkin();

    // currentSkinFile (the running skin, empty for none) is selected when it
    // is one of the listed files.
    FrmSkin2(const QString &installFolder, const QString &currentSkinFile, QWidget *parent = nullptr);

    int chosenTheme() const;
    // A file name from the list, noSkin(), or empty when no entry is selected.
    QString chosenSkin() const;

private:
    void fillSkinList(const QString &currentSkinFile);
    void cmdOkClick();
    void showSkinInfo();

    QString m_installFolder;
    QComboBox *m_cmbTheme = nullptr;
    QListWidget *m_List1 = nullptr;
    QLabel *m_lblInfo = nullptr;
    QPushButton *m_cmdOk = nullptr;
};
