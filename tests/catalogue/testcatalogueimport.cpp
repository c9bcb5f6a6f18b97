#include "catalogue/catalogue.h"

#include "app/apperror.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace {

class Import : public ProfileTest
{
protected:
    Import() { QDir().mkpath(folder); }

    void writePls(const QString &fileName, const QString &file1, const QString &title1,
                  const QString &eol = QStringLiteral("\n"))
    {
        const QString text = QStringLiteral("[playlist]") + eol + QStringLiteral("numberofentries=1") + eol +
                             QStringLiteral("File1=") + file1 + eol + QStringLiteral("Title1=") + title1 +
                             eol + QStringLiteral("Length1=-1") + eol;
        TempProfile::writeFile(folder + u'/' + fileName, text.toUtf8());
    }
    bool importFirst(const QString &fileName)
    {
        return catalogue.ImportPlaylistFile(folder, fileName, QStringLiteral("Jazz"));
    }
    bool importSecond(const QString &fileName)
    {
        return catalogue.ImportPlaylistFile2(folder, fileName, QStringLiteral("Jazz"));
    }
    void importFolder(bool secondVariant)
    {
        catalogue.ImportFolder(folder, QStringLiteral("Pop"), secondVariant, prompt,
                               QStringLiteral("Tunecatch"));
    }
    QString cataloguePath() const { return profile.dataFolder() + QStringLiteral("Stations.txt"); }

    const QString folder = profile.root() + QStringLiteral("/playlists");
    Catalogue catalogue;
    ScriptedPrompt prompt;
};

} // namespace

TEST_F(Import, DirectoryPlaylistGivesAnSsrnStationWithNewStationDefaults)
{
    writePls(QStringLiteral("Jazz One _#_ 128 _#_ 12345.pls"), QStringLiteral("http://a:8000/"),
             QStringLiteral("(#1 - 17/200) Jazz One"));
    ASSERT_TRUE(importFirst(QStringLiteral("Jazz One _#_ 128 _#_ 12345.pls")));
    ASSERT_EQ(catalogue.StationCount(), 1);
    catalogue.Separator = QStringLiteral("|");
    EXPECT_EQ(catalogue.StationLine(catalogue.at(1)),
              QStringLiteral(
                  "Jazz One|Jazz|128|mp3||.\\%STATION%_%SONG%_%DATE%_%TIME%.mp3|True|0|||ssrn#12345.pls|"));
    EXPECT_TRUE(catalogue.Dirty);

    // The same directory number under another name, in another letter case, is the same station.
    writePls(QStringLiteral("Other _#_ 64 _#_ 12345.PLS"), QStringLiteral("http://b/"),
             QStringLiteral("Other"));
    EXPECT_FALSE(importFirst(QStringLiteral("Other _#_ 64 _#_ 12345.PLS")));
    EXPECT_EQ(catalogue.StationCount(), 1);
}

TEST_F(Import, ShortOrMissingPlaylistAddsNothingAndAShortNameThrows)
{
    TempProfile::writeFile(folder + QStringLiteral("/Short _#_ 1 _#_ 2.pls"),
                           "[playlist]\nFile1=x\nTitle1=y");
    EXPECT_FALSE(importFirst(QStringLiteral("Short _#_ 1 _#_ 2.pls")));
    EXPECT_FALSE(importFirst(QStringLiteral("Missing _#_ 1 _#_ 3.pls")));
    EXPECT_FALSE(importSecond(QStringLiteral("Missing.pls")));
    writePls(QStringLiteral("Two _#_ parts.pls"), QStringLiteral("http://a/"), QStringLiteral("Two"));
    EXPECT_THROW(importFirst(QStringLiteral("Two _#_ parts.pls")), AppError);
    EXPECT_EQ(catalogue.StationCount(), 0);
    EXPECT_FALSE(catalogue.Dirty);
}

TEST_F(Import, SecondVariantKeepsTheFile1AddressWithItsCr)
{
    writePls(QStringLiteral("Smooth Jazz (128).pls"), QStringLiteral("http://a:8000/x"),
             QStringLiteral("Smooth"), QStringLiteral("\r\n"));
    ASSERT_TRUE(importSecond(QStringLiteral("Smooth Jazz (128).pls")));
    EXPECT_EQ(catalogue.at(1).StreamURL, QStringLiteral("http://a:8000/x\r"));
    EXPECT_EQ(catalogue.at(1).BitRate, QStringLiteral("128"));

    writePls(QStringLiteral("Again.pls"), QStringLiteral("HTTP://A:8000/X"), QStringLiteral("Again"),
             QStringLiteral("\r\n"));
    EXPECT_FALSE(importSecond(QStringLiteral("Again.pls")));
    EXPECT_EQ(catalogue.StationCount(), 1);
}

TEST_F(Import, SecondVariantTakesTheBitRateFromTheLastWordOfTheFileName)
{
    const QString rows[][2] = {{QStringLiteral("Smooth Jazz (128).pls"), QStringLiteral("128")},
                               {QStringLiteral("Smooth_96.pls"), QStringLiteral("96")},
                               {QStringLiteral("Cool (64)_x.pls"), QStringLiteral("64")},
                               {QStringLiteral("Smooth Jazz.pls"), QString()}};
    for (const auto &[fileName, bitRate] : rows) {
        writePls(fileName, QStringLiteral("http://a/") + fileName, QStringLiteral("T"));
        ASSERT_TRUE(importSecond(fileName));
        EXPECT_EQ(catalogue.at(catalogue.StationCount()).BitRate, bitRate) << fileName.toStdString();
    }
}

TEST_F(Import, NameIsTheCleanedTitleAfterTheDirectoryPrefix)
{
    const QString rows[][2] = {{QStringLiteral("(#1 - 17/200) Smooth Jazz / Blues: Live"),
                                QStringLiteral("Smooth Jazz  Blues Live")},
                               {QStringLiteral("No prefix=here"), QStringLiteral("No prefix=here")},
                               {QStringLiteral(")Leading"), QStringLiteral(")Leading")},
                               {QStringLiteral(")x) y"), QStringLiteral("x) y")},
                               {QStringLiteral("(#2 - 1/9)") + QString(70, u'n'), QString(60, u'n')}};
    for (const auto &[title, name] : rows) {
        const QString fileName = QStringLiteral("A _#_ 1 _#_ %1.pls").arg(catalogue.StationCount());
        writePls(fileName, QStringLiteral("http://a/"), title);
        ASSERT_TRUE(importFirst(fileName));
        EXPECT_EQ(catalogue.at(catalogue.StationCount()).Name, name) << title.toStdString();
    }
}

TEST_F(Import, FolderImportSavesReloadsAndAddsNothingTheSecondTime)
{
    writePls(QStringLiteral("Jazz One _#_ 128 _#_ 11.pls"), QStringLiteral("http://a/"),
             QStringLiteral("One"));
    writePls(QStringLiteral("Renamed _#_ 128 _#_ 11.pls"), QStringLiteral("http://b/"),
             QStringLiteral("Two"));
    writePls(QStringLiteral("Rock _#_ 64 _#_ 12.pls"), QStringLiteral("http://c/"), QStringLiteral("Rock"));
    writePls(QStringLiteral("Ignored _#_ 64 _#_ 13.m3u"), QStringLiteral("http://d/"), QStringLiteral("No"));
    QDir().mkpath(profile.dataFolder());

    importFolder(false);
    EXPECT_EQ(catalogue.StationCount(), 2);
    EXPECT_FALSE(catalogue.Dirty);
    EXPECT_TRUE(prompt.shown.isEmpty());
    Catalogue reread;
    reread.Load(prompt, QStringLiteral("Tunecatch"));
    EXPECT_EQ(reread.StationCount(), 2);
    EXPECT_EQ(reread.at(1).Genre, QStringLiteral("Pop"));

    const QByteArray saved = TempProfile::readFile(cataloguePath());
    importFolder(false);
    EXPECT_EQ(catalogue.StationCount(), 2);
    // The reload puts a CR on the last station's InfoUrl, so the file only grows by that.
    EXPECT_EQ(TempProfile::readFile(cataloguePath()).size(), saved.size() + 2);

    importFolder(true);
    EXPECT_EQ(catalogue.StationCount(), 5);
    EXPECT_EQ(catalogue.at(5).BitRate, QString());
}

TEST_F(Import, BadFileNameStopsTheFolderBeforeTheSave)
{
    writePls(QStringLiteral("Good _#_ 1 _#_ 1.pls"), QStringLiteral("http://a/"), QStringLiteral("Good"));
    writePls(QStringLiteral("bad.pls"), QStringLiteral("http://b/"), QStringLiteral("Bad"));
    QDir().mkpath(profile.dataFolder());
    EXPECT_THROW(importFolder(false), AppError);
    EXPECT_FALSE(QFile::exists(cataloguePath()));
}
