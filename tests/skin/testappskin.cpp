#include "base/settingsstore.h"
#include "skin/appskin.h"
#include "support/skinfiles.h"
#include "support/tempprofile.h"

#include <QApplication>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using SkinFiles::Engine;

namespace {

TEST(AppSkin, StartUpFollowsTheStoredWishAndFallsBackToTheSystemLook)
{
    struct Row
    {
        Engine engine;
        bool skinFile;
        const char *skinOn; // nullptr: never stored
        bool running;
        const char *storedAfter;
    };
    const Row rows[] = {{Engine::Built, true, nullptr, true, "True"},
                        {Engine::Built, true, "true", true, "True"},
                        {Engine::Built, true, "TRUE", true, "True"},
                        {Engine::Built, true, "1", true, "True"},
                        {Engine::Built, true, "0", false, "0"},
                        {Engine::Built, true, "False", false, "False"},
                        {Engine::Built, false, "True", false, "False"},
                        {Engine::None, true, "True", false, "False"},
                        {Engine::WrongArchitecture, true, "True", false, "False"},
                        {Engine::NoExports, true, "True", false, "False"}};
    for (const Row &row : rows) {
        const std::string what = std::to_string(&row - rows);
        TempProfile profile;
        SkinFiles::installEngine(profile.installFolder(), row.engine);
        if (row.skinFile)
            QFile::copy(SkinFiles::shipped("Zelvane.urf"), profile.installFolder() + u"/Zelvane.urf"_s);
        if (row.skinOn)
            SettingsStore::saveSetting(SettingsStore::AppSkinOn, QString::fromLatin1(row.skinOn));
        ModAppSkin skin(profile.installFolder());
        EXPECT_EQ(skin.skinStartup(), row.running) << what;
        EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinOn), QLatin1StringView(row.storedAfter))
            << what;
        EXPECT_EQ(qApp->styleSheet().isEmpty(), !row.running) << what;
        if (row.running) {
            EXPECT_EQ(skin.skinFile(), skin.defaultSkinFile()) << what;
            EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinFile), skin.defaultSkinFile()) << what;
            // Running already: a second start-up leaves it as it is.
            EXPECT_TRUE(skin.skinStartup()) << what;
        }
        skin.removeSkin();
        EXPECT_TRUE(qApp->styleSheet().isEmpty()) << what;
    }
}

TEST(AppSkin, AStoredSkinStartsAndARefusedOrMissingOneTurnsSkinningOff)
{
    TempProfile profile;
    const QString folder = profile.installFolder();
    SkinFiles::installEngine(folder, Engine::Built);
    QFile::copy(SkinFiles::shipped("Ledovec.urf"), folder + u"/Ledovec.urf"_s);
    ModAppSkin skin(folder);
    SettingsStore::saveSetting(SettingsStore::AppSkinFile, folder + u"/Ledovec.urf"_s);
    ASSERT_TRUE(skin.skinStartup());
    EXPECT_EQ(skin.skinFile(), folder + u"/Ledovec.urf"_s);
    // A refused switch does not leave the old skin running against the setting.
    TempProfile::writeFile(folder + u"/Broken.urf"_s, SkinFiles::skin(u"Broken"_s, "QWidget { color: red; "));
    skin.startSkinWithFile(folder + u"/Broken.urf"_s);
    EXPECT_FALSE(skin.skinRunning());
    EXPECT_TRUE(qApp->styleSheet().isEmpty());
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinOn), u"False"_s);
    // A stored skin file that has gone.
    SettingsStore::saveBoolean(SettingsStore::AppSkinOn, true);
    SettingsStore::saveSetting(SettingsStore::AppSkinFile, folder + u"/Gone.urf"_s);
    EXPECT_FALSE(skin.skinStartup());
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::AppSkinOn), u"False"_s);
}

} // namespace
