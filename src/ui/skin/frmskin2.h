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
    static inline const QString NoSkin = QStringLiteral("{no skin}");

    // currentSkinFile (the running skin, empty for none) is selected when it
    // is one of the listed files.
    FrmSkin2(const QString &installFolder, const QString &currentSkinFile, QWidget *parent = nullptr);

    int ChosenTheme() const;
    // A file name from the list, NoSkin, or empty when no entry is selected.
    QString ChosenSkin() const;

private:
    void fillSkinList(const QString &currentSkinFile);
    void cmdOk_Click();
    void showSkinInfo();

    QString m_installFolder;
    QComboBox *cmbTheme = nullptr;
    QListWidget *List1 = nullptr;
    QLabel *lblInfo = nullptr;
    QPushButton *cmdOk = nullptr;
};
