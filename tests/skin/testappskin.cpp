#include "app/apperror.h"
#include "app/settingsstore.h"
#include "skin/appskin.h"
#include "skinfiles.h"
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
    const Row rows[] = {
        {Engine::Built, true, nullptr, true, "True"},
        {Engine::Built, true, "true", true, "True"},
        {Engine::Built, true, "TRUE", true, "True"},
        {Engine::Built, true, "1", true, "True"},
        {Engine::Built, true, "0", false, "0"},
        {Engine::Built, true, "False", false, "False"},
        {Engine::Built, false, "True", false, "False"},
        {Engine::None, true, "True", false, "False"},
        {Engine::WrongArchitecture, true, "True", false, "False"},
        {Engine::NoExports, true, "True", false, "False"},
    };
    for (const Row &row : rows) {
        const std::string what = std::to_string(&row - rows);
        TempProfile profile;
        SkinFiles::InstallEngine(profile.installFolder(), row.engine);
        if (row.skinFile)
            QFile::copy(SkinFiles::Shipped("Zelvane.urf"), profile.installFolder() + u"/Zelvane.urf"_s);
        if (row.skinOn)
            SettingsStore::SaveSetting(SettingsStore::AppSkinOn, QString::fromLatin1(row.skinOn));

        ModAppSkin skin(profile.installFolder());
        EXPECT_EQ(skin.SkinStartup(), row.running) << what;
        EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinOn), QLatin1StringView(row.storedAfter))
            << what;
        EXPECT_EQ(qApp->styleSheet().isEmpty(), !row.running) << what;
        if (row.running) {
            EXPECT_EQ(skin.SkinFile(), skin.DefaultSkinFile()) << what;
            EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinFile), skin.DefaultSkinFile()) << what;
            // Running already: a second start-up leaves it as it is.
            EXPECT_TRUE(skin.SkinStartup()) << what;
        }
        skin.RemoveSkin();
        EXPECT_TRUE(qApp->styleSheet().isEmpty()) << what;
    }
}

class AppSkinTest : public ProfileTest
{
protected:
    void SetUp() override
    {
        SkinFiles::InstallEngine(profile.installFolder(), Engine::Built);
        for (const char *name : {"Zelvane.urf", "Ledovec.urf"})
            QFile::copy(SkinFiles::Shipped(name), install(name));
    }
    void TearDown() override { skin.RemoveSkin(); }

    QString install(const char *name) const
    {
        return profile.installFolder() + u'/' + QLatin1StringView(name);
    }

    ModAppSkin skin{profile.installFolder()};
};

TEST_F(AppSkinTest, TextThatIsNoBooleanStopsStartUp)
{
    SettingsStore::SaveSetting(SettingsStore::AppSkinOn, u"yes"_s);
    try {
        skin.SkinStartup();
        FAIL() << "no error";
    } catch (const AppError &e) {
        EXPECT_EQ(e.number(), AppError::TypeMismatch);
    }
    EXPECT_FALSE(skin.SkinRunning());
    EXPECT_TRUE(qApp->styleSheet().isEmpty());
}

TEST_F(AppSkinTest, StoredSkinsSwitchesAndSkinOffKeepTheLookAndTheSettingsInStep)
{
    SettingsStore::SaveSetting(SettingsStore::AppSkinFile, install("Ledovec.urf"));
    ASSERT_TRUE(skin.SkinStartup());
    EXPECT_EQ(skin.SkinFile(), install("Ledovec.urf"));

    // A refused switch does not leave the old skin running against the setting.
    TempProfile::writeFile(install("Broken.urf"), SkinFiles::Skin(u"Broken"_s, "QWidget { color: red; "));
    skin.StartSkinWithFile(install("Broken.urf"));
    EXPECT_FALSE(skin.SkinRunning());
    EXPECT_TRUE(qApp->styleSheet().isEmpty());
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinOn), u"False"_s);

    skin.StartSkinWithFile(install("Zelvane.urf"));
    EXPECT_TRUE(skin.SkinRunning());
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinOn), u"True"_s);
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinFile), install("Zelvane.urf"));

    skin.SkinOff();
    EXPECT_FALSE(skin.SkinRunning());
    EXPECT_TRUE(qApp->styleSheet().isEmpty());
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinOn), u"False"_s);
    EXPECT_FALSE(skin.SkinStartup());

    // A stored skin file that has gone.
    SettingsStore::SaveBoolean(SettingsStore::AppSkinOn, true);
    SettingsStore::SaveSetting(SettingsStore::AppSkinFile, install("Gone.urf"));
    EXPECT_FALSE(skin.SkinStartup());
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::AppSkinOn), u"False"_s);
}

} // namespace
