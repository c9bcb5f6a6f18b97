#include "catalogue/catalogue.h"

#include "base/apperror.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

class Import : public ProfileTest
{
public:
    Import() { QDir().mkpath(folder); }
    // A one-entry playlist file in the folder.
    void writePls(const QString &fileName, const QString &file1, const QString &title1,
                  const QString &eol = u"\n"_s)
    {
        const QStringList lines = {u"[playlist]"_s, u"numberofentries=1"_s, u"File1="_s + file1,
                                   u"Title1="_s + title1, u"Length1=-1"_s};
        TempProfile::writeFile(folder + u'/' + fileName, (lines.join(eol) + eol).toUtf8());
    }
    // Writes a playlist, imports it with the first or second variant and returns the import's answer.
    bool import(bool second, const QString &fileName, const QString &file1, const QString &title1,
                const QString &eol = u"\n"_s)
    {
        if (!file1.isNull())
            writePls(fileName, file1, title1, eol);
        return second ? catalogue.importPlaylistFile2(folder, fileName, u"Jazz"_s)
                      : catalogue.importPlaylistFile(folder, fileName, u"Jazz"_s);
    }
    const Station &last() const { return catalogue.at(catalogue.stationCount()); }
    void importFolder(bool secondVariant)
    {
        catalogue.importFolder(folder, u"Pop"_s, secondVariant, prompt, u"Tunecatch"_s);
    }
    QString cataloguePath() const { return profile.dataFolder() + u"Stations.txt"_s; }
    const QString folder = profile.root() + u"/playlists"_s;
    Catalogue catalogue;
    ScriptedPrompt prompt;
};

} // namespace

TEST_F(Import, DirectoryPlaylistGivesAnSsrnStationWithNewStationDefaults)
{
    ASSERT_TRUE(
        import(false, u"Jazz One _#_ 128 _#_ 12345.pls"_s, u"http://a:8000/"_s, u"(#1 - 17/200) Jazz One"_s));
    catalogue.separator = u"|"_s;
    EXPECT_EQ(catalogue.stationLine(last()),
              u"Jazz One|Jazz|128|mp3||.\\%STATION%_%SONG%_%DATE%_%TIME%.mp3|True|0|||ssrn#12345.pls|"_s);
    EXPECT_TRUE(catalogue.dirty);
    // The same directory number under another name, in another letter case, is the same station.
    EXPECT_FALSE(import(false, u"Other _#_ 64 _#_ 12345.PLS"_s, u"http://b/"_s, u"Other"_s));
    // The name is the cleaned title after the directory prefix.
    const QString names[][2] = {{u"(#1 - 17/200) Smooth Jazz / Blues: Live"_s, u"Smooth Jazz  Blues Live"_s},
                                {u"No prefix=here"_s, u"No prefix=here"_s},
                                {u")Leading"_s, u")Leading"_s},
                                {u")x) y"_s, u"x) y"_s},
                                {u"(#2 - 1/9)"_s + QString(70, u'n'), QString(60, u'n')}};
    for (const auto &[title, name] : names) {
        ASSERT_TRUE(
            import(false, u"A _#_ 1 _#_ %1.pls"_s.arg(catalogue.stationCount()), u"http://a/"_s, title));
        EXPECT_EQ(last().Name, name) << title.toStdString();
    }
    EXPECT_EQ(catalogue.stationCount(), 6);
}

TEST_F(Import, SecondVariantKeepsTheAddressWithItsCrAndTakesTheBitRateFromTheLastWord)
{
    ASSERT_TRUE(import(true, u"Smooth Jazz (128).pls"_s, u"http://a:8000/x"_s, u"Smooth"_s, u"\r\n"_s));
    EXPECT_EQ(last().StreamURL, u"http://a:8000/x\r"_s);
    EXPECT_EQ(last().BitRate, u"128"_s);
    EXPECT_FALSE(import(true, u"Again.pls"_s, u"HTTP://A:8000/X"_s, u"Again"_s, u"\r\n"_s));
    const QString rows[][2] = {
        {u"Smooth_96.pls"_s, u"96"_s}, {u"Cool (64)_x.pls"_s, u"64"_s}, {u"Smooth Jazz.pls"_s, {}}};
    for (const auto &[fileName, bitRate] : rows) {
        ASSERT_TRUE(import(true, fileName, u"http://a/"_s + fileName, u"T"_s));
        EXPECT_EQ(last().BitRate, bitRate) << fileName.toStdString();
    }
    EXPECT_EQ(catalogue.stationCount(), 4);
}

TEST_F(Import, ShortOrMissingPlaylistAddsNothingAndAShortNameThrows)
{
    TempProfile::writeFile(folder + u"/Short _#_ 1 _#_ 2.pls"_s, "[playlist]\nFile1=x\nTitle1=y");
    EXPECT_FALSE(import(false, u"Short _#_ 1 _#_ 2.pls"_s, {}, {}));
    EXPECT_FALSE(import(false, u"Missing _#_ 1 _#_ 3.pls"_s, {}, {}));
    EXPECT_FALSE(import(true, u"Missing.pls"_s, {}, {}));
    EXPECT_THROW(import(false, u"Two _#_ parts.pls"_s, u"http://a/"_s, u"Two"_s), AppError);
    EXPECT_EQ(catalogue.stationCount(), 0);
    EXPECT_FALSE(catalogue.dirty);
    // A bad name stops a folder import before the save.
    QDir().mkpath(profile.dataFolder());
    writePls(u"Good _#_ 1 _#_ 1.pls"_s, u"http://a/"_s, u"Good"_s);
    EXPECT_THROW(importFolder(false), AppError);
    EXPECT_FALSE(QFile::exists(cataloguePath()));
}

TEST_F(Import, FolderImportSavesReloadsAndAddsNothingTheSecondTime)
{
    writePls(u"Jazz One _#_ 128 _#_ 11.pls"_s, u"http://a/"_s, u"One"_s);
    writePls(u"Renamed _#_ 128 _#_ 11.pls"_s, u"http://b/"_s, u"Two"_s);
    writePls(u"Rock _#_ 64 _#_ 12.pls"_s, u"http://c/"_s, u"Rock"_s);
    writePls(u"Ignored _#_ 64 _#_ 13.m3u"_s, u"http://d/"_s, u"No"_s);
    QDir().mkpath(profile.dataFolder());
    importFolder(false);
    EXPECT_EQ(catalogue.stationCount(), 2);
    EXPECT_FALSE(catalogue.dirty);
    EXPECT_TRUE(prompt.shown.isEmpty());
    Catalogue reread;
    reread.load(prompt, u"Tunecatch"_s);
    EXPECT_EQ(reread.stationCount(), 2);
    EXPECT_EQ(reread.at(1).Genre, u"Pop"_s);
    const QByteArray saved = TempProfile::readFile(cataloguePath());
    importFolder(false);
    EXPECT_EQ(catalogue.stationCount(), 2);
    // The reload puts a CR on the last station's InfoUrl, so the file only grows by that.
    EXPECT_EQ(TempProfile::readFile(cataloguePath()).size(), saved.size() + 2);
    importFolder(true);
    EXPECT_EQ(catalogue.stationCount(), 5);
    EXPECT_EQ(last().BitRate, QString());
}
