#include "ui/skin/frmskin2.h"

#include "base/settingsstore.h"
#include "skin/urffile.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

FrmSkin2::FrmSkin2(const QString &installFolder, const QString &currentSkinFile, QWidget *parent)
    : QDialog(parent), m_installFolder(installFolder)
{
    setObjectName(QStringLiteral("FrmSkin2"));

    cmbTheme = new QComboBox(this);
    cmbTheme->setObjectName(QStringLiteral("cmbTheme"));
    cmbTheme->setAccessibleName(tr("Theme"));
    cmbTheme->addItems({UrfSkin::themeName(0), UrfSkin::themeName(1)});
    // The chooser's own default differs from the program's on purpose.
    const int theme = SettingsStore::getNumber(SettingsStore::Theme, 0);
    cmbTheme->setCurrentIndex(theme >= 0 && theme < cmbTheme->count() ? theme : 0);

    List1 = new QListWidget(this);
    List1->setObjectName(QStringLiteral("List1"));
    List1->setAccessibleName(tr("Skin"));
    List1->setMinimumHeight(150);

    lblInfo = new QLabel(this);
    lblInfo->setObjectName(QStringLiteral("lblInfo"));
    lblInfo->setWordWrap(true);
    lblInfo->setTextFormat(Qt::PlainText);
    lblInfo->setMinimumHeight(lblInfo->fontMetrics().lineSpacing() * 2);

    cmdOk = new QPushButton(tr("OK"), this);
    cmdOk->setObjectName(QStringLiteral("cmdOk"));
    cmdOk->setDefault(true);
    auto *cmdCancel = new QPushButton(tr("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(cmdOk, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);

    auto *form = new QFormLayout;
    form->addRow(tr("&Theme:"), cmbTheme);
    form->addRow(tr("&Skin:"), List1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(lblInfo);
    layout->addWidget(buttons);
    setMinimumWidth(360);

    fillSkinList(currentSkinFile);
    showSkinInfo();

    connect(cmdOk, &QPushButton::clicked, this, &FrmSkin2::cmdOk_Click);
    connect(cmdCancel, &QPushButton::clicked, this, &FrmSkin2::reject);
    connect(List1, &QListWidget::itemClicked, this, &FrmSkin2::cmdOk_Click);
    connect(List1, &QListWidget::currentRowChanged, this, &FrmSkin2::showSkinInfo);
}

void FrmSkin2::fillSkinList(const QString &currentSkinFile)
{
    List1->addItem(NoSkin);
    // The file system's own order; the filter never lists "." and "..".
    const QStringList files =
        QDir(m_installFolder)
            .entryList({QStringLiteral("*.urf")}, QDir::Files | QDir::Hidden, QDir::Unsorted);
    List1->addItems(files);

    const QFileInfo current(currentSkinFile);
    if (currentSkinFile.isEmpty()) {
        List1->setCurrentRow(0);
    } else if (current.absolutePath() == QDir(m_installFolder).absolutePath()) {
        const QList<QListWidgetItem *> found = List1->findItems(current.fileName(), Qt::MatchExactly);
        if (!found.isEmpty())
            List1->setCurrentItem(found.first());
    }
}

int FrmSkin2::ChosenTheme() const
{
    return cmbTheme->currentIndex();
}

QString FrmSkin2::ChosenSkin() const
{
    const QListWidgetItem *item = List1->currentItem();
    return item ? item->text() : QString();
}

void FrmSkin2::cmdOk_Click()
{
    SettingsStore::saveNumber(SettingsStore::Theme, ChosenTheme());
    accept();
}

void FrmSkin2::showSkinInfo()
{
    const QString skinName = ChosenSkin();
    if (skinName.isEmpty()) {
        lblInfo->clear();
        return;
    }
    if (skinName == NoSkin) {
        lblInfo->setText(tr("The system's own look."));
        return;
    }
    const UrfSkin skin = UrfSkin::read(m_installFolder + u'/' + skinName);
    if (skin.status != UrfSkin::Ok) {
        lblInfo->setText(tr("This file is not a skin the program can read."));
        return;
    }
    QString text = skin.author.isEmpty() ? skin.name : tr("%1, by %2").arg(skin.name, skin.author);
    if (skin.theme != UrfSkin::NoTheme)
        text += u'\n' + tr("Made for the %1 theme.").arg(UrfSkin::themeName(skin.theme));
    lblInfo->setText(text);
}
