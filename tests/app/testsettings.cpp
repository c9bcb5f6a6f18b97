#include "base/apperror.h"
#include "base/conversions.h"
#include "app/frmsettings.h"
#include "base/settingsstore.h"
#include "base/trimtool.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(Conversions, TextToBooleanAndNumbers)
{
    for (const char *yes : {"True", "true", "TRUE", "1", " -1 ", "2.5"})
        EXPECT_TRUE(Convert::toBoolean(QString::fromLatin1(yes))) << yes;
    for (const char *no : {"False", "fALSE", "0", "0.0"})
        EXPECT_FALSE(Convert::toBoolean(QString::fromLatin1(no))) << no;
    for (const char *bad : {"yes", "", "on", "1x"})
        EXPECT_THROW(Convert::toBoolean(QString::fromLatin1(bad)), AppError) << bad;
    // Whole numbers round half to even.
    for (const auto &[text, number] : {std::pair{" 3 ", 3}, {"2.5", 2}, {"3.5", 4}, {"-7", -7}})
        EXPECT_EQ(Convert::toInt32(QString::fromLatin1(text)), number) << text;
    for (const char *bad : {"", "3 stars", "99999999999"})
        EXPECT_THROW(Convert::toInt32(QString::fromLatin1(bad)), AppError) << bad;
    for (const auto &[text, number] : {std::pair{"1x", 1}, {"x1", 0}, {"  4.5 stars", 4}})
        EXPECT_EQ(Convert::leadingInt32(QString::fromLatin1(text)), number) << text;
    EXPECT_DOUBLE_EQ(Convert::leadingNumber(u"-7abc"), -7);
}

class SettingsTest : public ProfileTest
{
};

TEST_F(SettingsTest, ValuesLiveAsTextInTheConfigSectionOfTunecatch)
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

TEST_F(SettingsTest, TheDialogStoresOkRestoresTheDefaultAtOnceAndCancelsWithoutWriting)
{
    ScriptedPrompt prompt;
    TrimTool trim{u"mytool %MP3FILE%"_s};
    {
        FrmSettings dialog(trim);
        auto *text = dialog.findChild<QLineEdit *>(u"txtTrimMP3"_s);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->text(), u"mytool %MP3FILE%"_s);
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdSearch"_s), Qt::LeftButton);
        EXPECT_EQ(text->text(), TrimTool::defaultCommand);
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdCancel"_s), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
    }
    // Restoring wrote at once: cancelling afterwards keeps the default.
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::TrimMP3Tool), TrimTool::defaultCommand);
    {
        FrmSettings dialog(trim);
        auto *text = dialog.findChild<QLineEdit *>(u"txtTrimMP3"_s);
        text->setText(u"x"_s);
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdOk"_s), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    }
    EXPECT_EQ(trim.command, u"x"_s);
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::TrimMP3Tool), u"x"_s);
    {
        FrmSettings dialog(trim);
        dialog.findChild<QLineEdit *>(u"txtTrimMP3"_s)->setText(u"changed"_s);
        QTest::keyClick(&dialog, Qt::Key_Escape);
    }
    EXPECT_EQ(SettingsStore::getSetting(SettingsStore::TrimMP3Tool), u"x"_s);
}

} // namespace
