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

QString FrmSkin2::noSkin()
{
    return tr("{no skin}");
}

FrmSkin2::FrmSkin2(const QString &installFolder, const QString &currentSkinFile, QWidget *parent)
    : QDialog(parent), m_installFolder(installFolder)
{
    setObjectName(QStringLiteral("FrmSkin2"));

    m_cmbTheme = new QComboBox(this);
    m_cmbTheme->setObjectName(QStringLiteral("cmbTheme"));
    m_cmbTheme->setAccessibleName(tr("Theme"));
    m_cmbTheme->addItems({UrfSkin::themeName(0), UrfSkin::themeName(1)});
    // The chooser's own default differs from the program's on purpose.
    const int theme = SettingsStore::getNumber(SettingsStore::Theme, 0);
    m_cmbTheme->setCurrentIndex(theme >= 0 && theme < m_cmbTheme->count() ? theme : 0);

    m_List1 = new QListWidget(this);
    m_List1->setObjectName(QStringLiteral("List1"));
    m_List1->setAccessibleName(tr("Skin"));
    m_List1->setMinimumHeight(150);

    m_lblInfo = new QLabel(this);
    m_lblInfo->setObjectName(QStringLiteral("lblInfo"));
    m_lblInfo->setWordWrap(true);
    m_lblInfo->setTextFormat(Qt::PlainText);
    m_lblInfo->setMinimumHeight(m_lblInfo->fontMetrics().lineSpacing() * 2);

    m_cmdOk = new QPushButton(tr("OK"), this);
    m_cmdOk->setObjectName(QStringLiteral("cmdOk"));
    m_cmdOk->setDefault(true);
    auto *cmdCancel = new QPushButton(tr("Cancel"), this);
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(m_cmdOk, QDialogButtonBox::AcceptRole);
    buttons->addButton(cmdCancel, QDialogButtonBox::RejectRole);

    auto *form = new QFormLayout;
    form->addRow(tr("&Theme:"), m_cmbTheme);
    form->addRow(tr("&Skin:"), m_List1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_lblInfo);
    layout->addWidget(buttons);
    setMinimumWidth(360);

    fillSkinList(currentSkinFile);
    showSkinInfo();

    connect(m_cmdOk, &QPushButton::clicked, this, &FrmSkin2::cmdOkClick);
    connect(cmdCancel, &QPushButton::clicked, this, &FrmSkin2::reject);
    connect(m_List1, &QListWidget::itemClicked, this, &FrmSkin2::cmdOkClick);
    connect(m_List1, &QListWidget::currentRowChanged, this, &FrmSkin2::showSkinInfo);
}

void FrmSkin2::fillSkinList(const QString &currentSkinFile)
{
    m_List1->addItem(noSkin());
    // The file system's own order, hidden files left out; the filter never
    // lists "." and "..".
    const QStringList files =
        QDir(m_installFolder).entryList({QStringLiteral("*.urf")}, QDir::Files, QDir::Unsorted);
    m_List1->addItems(files);

    const QFileInfo current(currentSkinFile);
    if (currentSkinFile.isEmpty()) {
        m_List1->setCurrentRow(0);
    } else if (current.absolutePath() == QDir(m_installFolder).absolutePath()) {
        const QList<QListWidgetItem *> found = m_List1->findItems(current.fileName(), Qt::MatchExactly);
        if (!found.isEmpty())
            m_List1->setCurrentItem(found.first());
    }
}

int FrmSkin2::chosenTheme() const
{
    return m_cmbTheme->currentIndex();
}

QString FrmSkin2::chosenSkin() const
{
    const QListWidgetItem *item = m_List1->currentItem();
    return item ? item->text() : QString();
}

void FrmSkin2::cmdOkClick()
{
    SettingsStore::saveNumber(SettingsStore::Theme, chosenTheme());
    accept();
}

void FrmSkin2::showSkinInfo()
{
    const QString skinName = chosenSkin();
    if (skinName.isEmpty()) {
        m_lblInfo->clear();
        return;
    }
    if (skinName == noSkin()) {
        m_lblInfo->setText(tr("The system's own look."));
        return;
    }
    const UrfSkin skin = UrfSkin::read(m_installFolder + u'/' + skinName);
    if (skin.status != UrfSkin::Ok) {
        m_lblInfo->setText(tr("This file is not a skin the program can read."));
        return;
    }
    QString text = skin.author.isEmpty() ? skin.name : tr("%1, by %2").arg(skin.name, skin.author);
    if (skin.theme != UrfSkin::NoTheme)
        text += u'\n' + tr("Made for the %1 theme.").arg(UrfSkin::themeName(skin.theme));
    m_lblInfo->setText(text);
}
