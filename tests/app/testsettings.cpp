#include "app/appstate.h"
#include "app/conversions.h"
#include "app/apperror.h"
#include "app/frmsettings.h"
#include "app/settingsstore.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTest>

#include <gtest/gtest.h>

namespace {

TEST(Conversions, BooleanTextIsTrueFalseInAnyCaseOrANumber)
{
    for (const char *yes : {"True", "true", "TRUE", "1", " -1 ", "2.5"})
        EXPECT_TRUE(Convert::ToBoolean(QString::fromLatin1(yes))) << yes;
    for (const char *no : {"False", "fALSE", "0", "0.0"})
        EXPECT_FALSE(Convert::ToBoolean(QString::fromLatin1(no))) << no;
    for (const char *bad : {"yes", "", "on", "1x"})
        EXPECT_THROW(Convert::ToBoolean(QString::fromLatin1(bad)), AppError) << bad;
}

TEST(Conversions, IntegersRoundHalfToEvenAndReportOverflow)
{
    EXPECT_EQ(Convert::ToInt32(u" 3 "), 3);
    EXPECT_EQ(Convert::ToInt32(u"2.5"), 2);
    EXPECT_EQ(Convert::ToInt32(u"3.5"), 4);
    EXPECT_EQ(Convert::ToInt32(u"-7"), -7);
    EXPECT_THROW(Convert::ToInt32(u""), AppError);
    EXPECT_THROW(Convert::ToInt32(u"3 stars"), AppError);
    EXPECT_THROW(Convert::ToInt32(u"99999999999"), AppError);
    EXPECT_EQ(Convert::LeadingInt32(u"1x"), 1);
    EXPECT_EQ(Convert::LeadingInt32(u"x1"), 0);
    EXPECT_EQ(Convert::LeadingInt32(u"  4.5 stars"), 4);
    EXPECT_DOUBLE_EQ(Convert::LeadingNumber(u"-7abc"), -7);
}

class SettingsTest : public ProfileTest
{
};

TEST_F(SettingsTest, ValuesLiveAsTextInTheConfigSectionOfTunecatch)
{
    EXPECT_EQ(SettingsStore::GetNumber(SettingsStore::V, 27), 27);
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::OptGenre), QString());
    EXPECT_TRUE(SettingsStore::GetBoolean(SettingsStore::AppSkinOn, true));

    SettingsStore::SaveNumber(SettingsStore::V, 32);
    SettingsStore::SaveBoolean(SettingsStore::AppSkinOn, false);
    SettingsStore::SaveSetting(SettingsStore::OptGenre, QStringLiteral("Jazz"));

    QSettings file(profile.configFile(), QSettings::IniFormat);
    EXPECT_EQ(file.value(QStringLiteral("CONFIG/V")).toString(), QStringLiteral("32"));
    EXPECT_EQ(file.value(QStringLiteral("CONFIG/AppSkinOn")).toString(), QStringLiteral("False"));
    EXPECT_EQ(file.value(QStringLiteral("CONFIG/OptGenre")).toString(), QStringLiteral("Jazz"));
    EXPECT_FALSE(SettingsStore::GetBoolean(SettingsStore::AppSkinOn, true));
}

TEST_F(SettingsTest, TheDialogStoresOkRestoresTheDefaultAtOnceAndCancelsWithoutWriting)
{
    ScriptedPrompt prompt;
    AppState state(profile.installFolder(), prompt);
    state.TrimToolCommand = QStringLiteral("mytool %MP3FILE%");

    {
        FrmSettings dialog(state);
        auto *text = dialog.findChild<QLineEdit *>(QStringLiteral("txtTrimMP3"));
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(text->text(), QStringLiteral("mytool %MP3FILE%"));
        QTest::mouseClick(dialog.findChild<QPushButton *>(QStringLiteral("cmdSearch")), Qt::LeftButton);
        EXPECT_EQ(text->text(), AppState::DefaultTrimTool);
        QTest::mouseClick(dialog.findChild<QPushButton *>(QStringLiteral("cmdCancel")), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Rejected);
    }
    // Restoring wrote at once: cancelling afterwards keeps the default.
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::TrimMP3Tool), AppState::DefaultTrimTool);

    {
        FrmSettings dialog(state);
        auto *text = dialog.findChild<QLineEdit *>(QStringLiteral("txtTrimMP3"));
        text->setText(QStringLiteral("x"));
        QTest::mouseClick(dialog.findChild<QPushButton *>(QStringLiteral("cmdOk")), Qt::LeftButton);
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    }
    EXPECT_EQ(state.TrimToolCommand, QStringLiteral("x"));
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::TrimMP3Tool), QStringLiteral("x"));

    {
        FrmSettings dialog(state);
        dialog.findChild<QLineEdit *>(QStringLiteral("txtTrimMP3"))->setText(QStringLiteral("changed"));
        QTest::keyClick(&dialog, Qt::Key_Escape);
    }
    EXPECT_EQ(SettingsStore::GetSetting(SettingsStore::TrimMP3Tool), QStringLiteral("x"));
}

} // namespace
