#include "app/frmsettings.h"

#include "base/settingsstore.h"
#include "base/trimtool.h"
#include "recorder/songfileoptions.h"
#include "support/accessiblenames.h"
#include "support/tempprofile.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using FrmSettingsTest = ProfileTest;

TEST_F(FrmSettingsTest, TheDialogStoresOkRestoresTheDefaultAtOnceAndCancelsWithoutWriting)
{
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

TEST_F(FrmSettingsTest, SongNotificationsAreOffUntilTurnedOnAndKeptOnlyByOk)
{
    TrimTool trim{u"t"_s};
    EXPECT_FALSE(FrmSettings::songNotifications());
    for (const bool ok : {false, true}) {
        FrmSettings dialog(trim);
        auto *box = dialog.findChild<QCheckBox *>(u"chkSongNotifications"_s);
        ASSERT_NE(box, nullptr);
        EXPECT_FALSE(box->isChecked());
        box->setChecked(true);
        QTest::mouseClick(dialog.findChild<QPushButton *>(ok ? u"cmdOk"_s : u"cmdCancel"_s), Qt::LeftButton);
        EXPECT_EQ(FrmSettings::songNotifications(), ok);
    }
    FrmSettings dialog(trim);
    EXPECT_TRUE(dialog.findChild<QCheckBox *>(u"chkSongNotifications"_s)->isChecked());
    SettingsStore::saveSetting(SettingsStore::SongNotifications, u"maybe"_s);
    EXPECT_FALSE(FrmSettings::songNotifications()) << "a value edited by hand into something else";
}

TEST_F(FrmSettingsTest, TheDirectoryServerIsStoredOnlyWhenItIsAnAddressOrEmpty)
{
    TrimTool trim{u"mytool"_s};
    const std::pair<QString, QString> rows[] = {
        // typed, then stored ("-" when the dialog stays open with the reason)
        {u"  http://127.0.0.1:8080 "_s, u"http://127.0.0.1:8080"_s},
        {u"http://127.0.0.1:8080/json"_s, u"-"_s},
        {u"ftp://mirror.example"_s, u"-"_s},
        {QString(), QString()},
    };
    for (const auto &[typed, stored] : rows) {
        SCOPED_TRACE(typed.toStdString());
        SettingsStore::saveSetting(SettingsStore::DirectoryServer, u"-"_s);
        FrmSettings dialog(trim);
        dialog.findChild<QLineEdit *>(u"txtDirectoryServer"_s)->setText(typed);
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdOk"_s), Qt::LeftButton);
        EXPECT_EQ(SettingsStore::getSetting(SettingsStore::DirectoryServer), stored);
        EXPECT_EQ(dialog.result(), stored == u"-" ? QDialog::Rejected : QDialog::Accepted);
        EXPECT_EQ(dialog.findChild<QLabel *>(u"lblServerError"_s)->text().isEmpty(), stored != u"-");
    }
}

// What song files carry: shown as stored, stored on OK, and what a recording reads.
TEST_F(FrmSettingsTest, SongFileChoicesAreStoredOnOk)
{
    TrimTool trim;
    EXPECT_TRUE(SongFileOptions::fromStore().writeTags);
    EXPECT_EQ(SongFileOptions::fromStore().partialSongs, SongFileOptions::PartialSongs::Keep);
    EXPECT_TRUE(SongFileOptions::fromStore().cutAtQuietMoment) << "on until turned off";
    for (const bool tags : {false, true}) {
        FrmSettings dialog(trim);
        expectAccessibleNames(&dialog);
        auto *writeTags = dialog.findChild<QCheckBox *>(u"chkWriteTags"_s);
        auto *partial = dialog.findChild<QComboBox *>(u"cboPartialSongs"_s);
        auto *quietCut = dialog.findChild<QCheckBox *>(u"chkQuietCut"_s);
        ASSERT_TRUE(writeTags && partial && quietCut);
        EXPECT_EQ(writeTags->isChecked(), !tags) << "shows what was stored";
        EXPECT_EQ(quietCut->isChecked(), !tags);
        EXPECT_EQ(quietCut->text(), u"Cut songs at the quiet moment nearest the title change"_s);
        writeTags->setChecked(tags);
        quietCut->setChecked(tags);
        partial->setCurrentIndex(tags ? 2 : 1);
        QTest::mouseClick(dialog.findChild<QPushButton *>(u"cmdOk"_s), Qt::LeftButton);
        const SongFileOptions stored = SongFileOptions::fromStore();
        EXPECT_EQ(stored.writeTags, tags);
        EXPECT_EQ(stored.cutAtQuietMoment, tags);
        EXPECT_EQ(stored.partialSongs,
                  tags ? SongFileOptions::PartialSongs::Delete : SongFileOptions::PartialSongs::Move);
    }
    // A value edited by hand into something else leaves the default.
    SettingsStore::saveSetting(SettingsStore::PartialSongs, u"7"_s);
    EXPECT_EQ(SongFileOptions::fromStore().partialSongs, SongFileOptions::PartialSongs::Keep);
}

} // namespace
