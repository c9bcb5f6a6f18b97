#include "ui/skin/frmskin2.h"

#include "base/settingsstore.h"
#include "support/skinfiles.h"
#include "support/accessiblenames.h"
#include "support/tempprofile.h"

#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QtTest/QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QStringList entries(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i)
        texts << list->item(i)->text();
    return texts;
}

class ChooserTest : public ProfileTest
{
public:
    void SetUp() override
    {
        SkinFiles::installEngine(folder(), SkinFiles::Engine::Built);
        for (const char *name : {"Zelvane.urf", "Ledovec.urf"})
            QFile::copy(SkinFiles::shipped(name), folder() + u'/' + QLatin1StringView(name));
        ASSERT_TRUE(QFile::copy(SkinFiles::shipped("Zelvane.urf"), folder() + u"/.Hidden.urf"_s));
        TempProfile::writeFile(folder() + u"/notes.txt"_s, "not a skin");
        QDir().mkpath(folder() + u"/folder.urf"_s);
    }
    QString folder() const { return profile.installFolder(); }
    std::unique_ptr<FrmSkin2> open(const QString &currentSkin = {})
    {
        auto dialog = std::make_unique<FrmSkin2>(folder(), currentSkin);
        dialog->show();
        list = dialog->findChild<QListWidget *>(u"List1"_s);
        theme = dialog->findChild<QComboBox *>(u"cmbTheme"_s);
        return dialog;
    }
    QListWidget *list = nullptr;
    QComboBox *theme = nullptr;
};

TEST_F(ChooserTest, ListsNoSkinThenTheSkinFilesAndSelectsTheStoredTheme)
{
    auto dialog = open();
    QStringList skins = entries(list);
    ASSERT_FALSE(skins.isEmpty());
    EXPECT_EQ(skins.takeFirst(), u"{no skin}"_s);
    skins.sort();
    EXPECT_EQ(skins, QStringList({u"Ledovec.urf"_s, u"Zelvane.urf"_s})) << "hidden files are left out";
    EXPECT_EQ(dialog->chosenSkin(), u"{no skin}"_s);
    // The chooser's own default is 0; out of range counts as no choice.
    for (const auto &[stored, index] : {std::pair{"", 0}, {"1", 1}, {"0", 0}, {"7", 0}}) {
        if (*stored)
            SettingsStore::saveSetting(SettingsStore::Theme, QString::fromLatin1(stored));
        EXPECT_EQ(open()->chosenTheme(), index) << stored;
    }
    // The running skin is selected and described.
    dialog = open(folder() + u"/Ledovec.urf"_s);
    EXPECT_EQ(dialog->chosenSkin(), u"Ledovec.urf"_s);
    const QString info = dialog->findChild<QLabel *>(u"lblInfo"_s)->text();
    EXPECT_TRUE(info.contains(u"Ledovec"_s) && info.contains(u"Pale Blue"_s)) << info.toStdString();
    expectAccessibleNames(dialog.get());
}

TEST_F(ChooserTest, OkAndAClickStoreTheThemeAndEscapeCancels)
{
    auto dialog = open();
    theme->setCurrentIndex(1);
    dialog->findChild<QPushButton *>(u"cmdOk"_s)->click();
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_EQ(SettingsStore::getNumber(SettingsStore::Theme, -1), 1);
    dialog = open();
    theme->setCurrentIndex(0);
    QListWidgetItem *zelvane = list->findItems(u"Zelvane.urf"_s, Qt::MatchExactly).value(0);
    ASSERT_TRUE(zelvane);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(zelvane).center());
    EXPECT_EQ(dialog->result(), QDialog::Accepted);
    EXPECT_EQ(dialog->chosenSkin(), u"Zelvane.urf"_s);
    EXPECT_EQ(SettingsStore::getNumber(SettingsStore::Theme, -1), 0);
    for (const bool inList : {false, true}) {
        dialog = open();
        theme->setCurrentIndex(1);
        QTest::keyClick(inList ? static_cast<QWidget *>(list) : dialog.get(), Qt::Key_Escape);
        EXPECT_EQ(dialog->result(), QDialog::Rejected) << inList;
        EXPECT_FALSE(dialog->isVisible()) << inList;
        EXPECT_EQ(SettingsStore::getNumber(SettingsStore::Theme, -1), 0) << inList;
    }
}

} // namespace
