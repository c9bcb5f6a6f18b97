#include "ui/skin/skincommand.h"

#include "base/settingsstore.h"
#include "skin/appskin.h"
#include "skin/skinparam.h"
#include "support/skinfiles.h"
#include "support/tempprofile.h"
#include "ui/skin/frmskin2.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QListWidget>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

// The Skin command, with the chooser answered while it runs modally.
class SkinCommandTest : public ProfileTest
{
public:
    void SetUp() override
    {
        SkinFiles::installEngine(folder(), SkinFiles::Engine::Built);
        QFile::copy(SkinFiles::shipped("Ledovec.urf"), folder() + u"/Ledovec.urf"_s);
    }
    QString folder() const { return profile.installFolder(); }
    void TearDown() override { skin.removeSkin(); }
    bool run(const std::function<void(FrmSkin2 *)> &answer)
    {
        QTimer::singleShot(0, &mainWindow, [&answer] {
            FrmSkin2 *dialog = nullptr;
            for (QWidget *window : QApplication::topLevelWidgets())
                dialog = dialog ? dialog : qobject_cast<FrmSkin2 *>(window);
            // Whatever is wrong, the chooser's loop must end, or the test would hang.
            if (!dialog || QApplication::activeModalWidget() != dialog) {
                ADD_FAILURE() << "the chooser is not the modal window";
                if (dialog)
                    dialog->reject();
                return;
            }
            answer(dialog);
        });
        return SkinCommand(skin, themes).run(&mainWindow, [this] {
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
    // Nothing chosen in the list turns skinning off as well.
    skin.startSkinWithFile(folder() + u"/Ledovec.urf"_s);
    ASSERT_TRUE(skin.skinRunning());
    EXPECT_TRUE(run([](FrmSkin2 *dialog) {
        dialog->findChild<QListWidget *>(u"List1"_s)->setCurrentRow(-1);
        EXPECT_EQ(dialog->chosenSkin(), QString());
        dialog->findChild<QPushButton *>(u"cmdOk"_s)->click();
    }));
    EXPECT_FALSE(skin.skinRunning());
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinOn), u"False"_s);
}

} // namespace
