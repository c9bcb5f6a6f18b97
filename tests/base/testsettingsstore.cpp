#include "base/settingsstore.h"

#include "support/tempprofile.h"

#include <QSettings>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using SettingsStoreTest = ProfileTest;

TEST_F(SettingsStoreTest, ValuesLiveAsTextInTheConfigSectionOfTunecatch)
{
    EXPECT_EQ(SettingsStore::getNumber(SettingsStore::V, 27), 27);
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::OptGenre), QString());
    EXPECT_TRUE(SettingsStore::getBoolean(SettingsStore::AppSkinOn, true));
    SettingsStore::saveNumber(SettingsStore::V, 32);
    SettingsStore::saveBoolean(SettingsStore::AppSkinOn, false);
    SettingsStore::saveSetting(SettingsStore::OptGenre, u"Jazz"_s);
    QSettings file(profile.configFile(), QSettings::IniFormat);
    EXPECT_EQ(file.value(u"CONFIG/V"_s).toString(), u"32"_s);
    EXPECT_EQ(file.value(u"CONFIG/AppSkinOn"_s).toString(), u"False"_s);
    EXPECT_EQ(file.value(u"CONFIG/OptGenre"_s).toString(), u"Jazz"_s);
    EXPECT_FALSE(SettingsStore::getBoolean(SettingsStore::AppSkinOn, true));
}

} // namespace
