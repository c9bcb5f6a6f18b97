#include "base/settingsstore.h"
#include "skin/appskin.h"
#include "ui/skin/frmskin2.h"
#include "ui/skin/skincommand.h"
#include "skin/skinparam.h"
#include "support/skinfiles.h"
#include "support/accessiblenames.h"
#include "support/tempprofile.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>
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
    EXPECT_EQ(skins, QStringList({u"Ledovec.urf"_s, u"Zelvane.urf"_s}));
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

// The Skin command, with the chooser answered while it runs modally.
class SkinCommandTest : public ChooserTest
{
public:
    void TearDown() override { skin.removeSkin(); }
    bool run(const std::function<void(FrmSkin2 *)> &answer)
    {
        QTimer::singleShot(0, &mainWindow, [&answer] {
            auto *dialog = qobject_cast<FrmSkin2 *>(QApplication::activeModalWidget());
            ASSERT_TRUE(dialog);
            answer(dialog);
        });
        return SkinCommand(skin, themes).Run(&mainWindow, [this] {
            redraws << themes.themeIndex();
            skinRunningAtRedraw = skin.skinRunning();
        });
    }
    QWidget mainWindow;
    ModAppSkin skin{profile.installFolder()};
    cSkinParam themes;
    QList<int> redraws;
    bool skinRunningAtRedraw = true;
};

TEST_F(SkinCommandTest, TheChoiceIsAppliedUnlessCancelled)
{
    QPixmap icon(16, 16);
    icon.fill(Qt::red);
    mainWindow.setWindowIcon(QIcon(icon));
    mainWindow.show();
    EXPECT_FALSE(run([](FrmSkin2 *dialog) {
        EXPECT_EQ(dialog->windowIcon().cacheKey(), dialog->parentWidget()->windowIcon().cacheKey());
        EXPECT_TRUE(dialog->isModal());
        dialog->reject();
    }));
    EXPECT_TRUE(redraws.isEmpty());
    EXPECT_EQ(themes.themeIndex(), cSkinParam::BlackNight);
    // Theme first, then the main window's own colours, then the skin.
    EXPECT_TRUE(run([](FrmSkin2 *dialog) {
        dialog->findChild<QComboBox *>(u"cmbTheme"_s)->setCurrentIndex(0);
        auto *skins = dialog->findChild<QListWidget *>(u"List1"_s);
        skins->setCurrentItem(skins->findItems(u"Ledovec.urf"_s, Qt::MatchExactly).value(0));
        dialog->findChild<QPushButton *>(u"cmdOk"_s)->click();
    }));
    EXPECT_EQ(redraws, QList<int>{cSkinParam::PaleBlue});
    EXPECT_FALSE(skinRunningAtRedraw);
    EXPECT_EQ(themes.themeIndex(), cSkinParam::PaleBlue);
    EXPECT_EQ(skin.skinFile(), folder() + u"/Ledovec.urf"_s);
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinFile), folder() + u"/Ledovec.urf"_s);
    EXPECT_TRUE(run([](FrmSkin2 *dialog) {
        dialog->findChild<QListWidget *>(u"List1"_s)->setCurrentRow(0);
        dialog->findChild<QPushButton *>(u"cmdOk"_s)->click();
    }));
    EXPECT_FALSE(skin.skinRunning());
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinOn), u"False"_s);
}

} // namespace
