#include "catalogue/catalogue.h"

#include "base/apperror.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QString damagedText = u"Station file appears damaged.. attempting to recover"_s;
const QString header = u"# two first lines :  version  and seperator.\r\n"
                       "#format is:  Name Genre BitRate Format Category OutputFile SingleSong "
                       "Rating LastDate CallSign StreamURL InfoUrl\r\n"_s;

// Genre "G", BitRate "128", Format "mp3", OutputFile "o", CallSign "id", StreamURL "u"; the rest as given.
Station station(const QString &name, const QString &category, bool singleSong, qint32 rating,
                const QString &infoUrl, bool deleted = false)
{
    return Station{name,   u"G"_s,    u"128"_s, u"mp3"_s, category, u"o"_s, singleSong,
                   rating, QString(), u"id"_s,  u"u"_s,   infoUrl,  deleted};
}

class CatalogueFile : public ProfileTest
{
public:
    QString path() const { return profile.dataFolder() + u"Stations.txt"_s; }
    void writeCatalogue(const QString &text) { TempProfile::writeFile(path(), TempProfile::utf16File(text)); }
    void load() { catalogue.load(prompt, u"Tunecatch"_s); }
    // The stations in memory as the writer would put them, one per line.
    QString loaded() const
    {
        QStringList lines;
        for (int i = 1; i <= catalogue.stationCount(); ++i)
            lines.append(catalogue.stationLine(catalogue.at(i)));
        return lines.join(u'\n');
    }
    // Damaged: one message whose first line is the damaged text and which says why (a piece of it).
    void expectDamaged(const QString &why) const
    {
        if (why.isEmpty()) {
            EXPECT_EQ(prompt.texts(), QStringList{});
            return;
        }
        ASSERT_EQ(prompt.texts().size(), 1);
        const QStringList lines = prompt.texts().first().split(u'\n');
        EXPECT_EQ(lines.first(), damagedText);
        EXPECT_TRUE(prompt.texts().first().contains(why)) << prompt.texts().first().toStdString();
    }
    Catalogue catalogue;
    ScriptedPrompt prompt;
};

const QString good = u"A|G|128|mp3|Cat|out|True|1||id|http://a|http://i\r\n"_s;
const QString goodRead = u"A|G|128|mp3|Cat|out|True|1||id|http://a|http://i"_s;

} // namespace

TEST_F(CatalogueFile, SaveWritesTheExactFileAndKeepsTheOldOneAsBackup)
{
    QDir().mkpath(profile.dataFolder());
    catalogue.append(station(u"Jazz One"_s, u"Favourites"_s, true, 3, u"http://jazz.one"_s));
    catalogue.append(station(u"Gone"_s, {}, true, 0, {}, true));
    catalogue.append(station(u"Low"_s, {}, false, -2, {}));
    catalogue.dirty = true;
    catalogue.save();
    const QByteArray first = TempProfile::readFile(path());
    EXPECT_EQ(first,
              TempProfile::utf16File(u"2.1\r\n\u00B1\r\n"_s + header +
                                     u"Jazz One\u00B1G\u00B1128\u00B1mp3\u00B1Favourites\u00B1o\u00B1"
                                     "True\u00B13\u00B1\u00B1id\u00B1u\u00B1http://jazz.one\r\n"
                                     "Low\u00B1G\u00B1128\u00B1mp3\u00B1\u00B1o\u00B1False\u00B1-2\u00B1"
                                     "\u00B1id\u00B1u\u00B1\r\n"_s));
    EXPECT_EQ(catalogue.separator, u"\u00B1"_s);
    EXPECT_FALSE(catalogue.dirty);
    EXPECT_FALSE(QFile::exists(path() + u".bck"_s));
    catalogue.version = u"9.9"_s;
    catalogue.separator = u"|"_s;
    catalogue.save();
    EXPECT_EQ(TempProfile::readFile(path() + u".bck"_s), first);
    // The version written is always 2.1; the separator is the one held.
    EXPECT_TRUE(TempProfile::readFile(path()).startsWith(
        TempProfile::utf16File(u"2.1\r\n|\r\n"_s + header + u"Jazz One|G|"_s)));
}

TEST_F(CatalogueFile, SaveAndLoadKeepEverythingButGrowACrOnTheLastInfoUrl)
{
    QDir().mkpath(profile.dataFolder());
    catalogue.append(station(u" Spaced  "_s, u"Jazz"_s, true, -7, u"i1"_s));
    catalogue.append(station(u"Gone"_s, u"Rock"_s, false, 0, {}, true));
    catalogue.append(station(u"Last"_s, u"jazz"_s, false, 2, u"i3"_s));
    catalogue.separator = u"|"_s;
    catalogue.save();
    load();
    EXPECT_EQ(loaded(),
              u" Spaced  |G|128|mp3|Jazz|o|True|-7||id|u|i1\nLast|G|128|mp3|jazz|o|False|2||id|u|i3\r"_s);
    EXPECT_EQ(catalogue.categories.items(), (QStringList{QString(), u"Jazz"_s}));
    catalogue.save();
    load();
    EXPECT_EQ(loaded(),
              u" Spaced  |G|128|mp3|Jazz|o|True|-7||id|u|i1\nLast|G|128|mp3|jazz|o|False|2||id|u|i3\r\r"_s);
    expectDamaged({});
}

TEST_F(CatalogueFile, MissingFileIsDamagedAndKeepsVersionAndSeparator)
{
    catalogue.append(station(u"Old"_s, {}, true, 0, {}));
    catalogue.version = u"v"_s;
    catalogue.separator = u"s"_s;
    load();
    EXPECT_EQ(catalogue.stationCount(), 0);
    EXPECT_EQ(catalogue.version, u"v"_s);
    EXPECT_EQ(catalogue.separator, u"s"_s);
    expectDamaged(u"does not exist"_s);
}

TEST_F(CatalogueFile, TwoLineFileIsAnEmptyCatalogue)
{
    writeCatalogue(u"1.0\r\n|\r\n"_s);
    load();
    EXPECT_EQ(catalogue.stationCount(), 0);
    EXPECT_EQ(catalogue.version, u"1.0"_s);
    // The file's unread last byte leaves the final line's CR in place.
    EXPECT_EQ(catalogue.separator, u"|\r"_s);
    expectDamaged({});
}

TEST_F(CatalogueFile, TheSecondLineIsTheWholeSeparator)
{
    // "a<b" would split on a search for the first character alone.
    const QStringList fields = u"A,G,1,a<b,,o,True,1,,,u,w"_s.split(u',');
    // An empty separator never splits a line, so no station is read.
    for (const QString &separator : {u"<>"_s, u"\u00B1"_s, QString()}) {
        writeCatalogue(u"2.1\r\n"_s + separator + u"\r\n"_s + fields.join(separator) + u"\r\n#\r\n"_s);
        load();
        EXPECT_EQ(loaded(), separator.isEmpty() ? QString() : fields.join(separator));
    }
    expectDamaged({});
}

TEST_F(CatalogueFile, LoadReadsEachLineAsTheFileSays)
{
    const struct
    {
        const char *name;
        QString stationLines;
        QString why;        // a piece of the reason given; empty when not damaged
        QString loaded;     // the stations as the writer would put them, one per line
        QString categories; // joined by commas
    } rows[] = {
        {"comments and blank lines",
         u"   #B|G|1|mp3|C|o|True|1||i|u|w\r\n\t#B|G|1|mp3|C|o|True|1||i|u|w\r\n  \r\n"_s + good,
         {},
         goodRead + u'\r',
         u",Cat"_s},
        {"ten fields skipped", u"B|G|1|mp3|C|o|True|1||i\r\n"_s + good, {}, goodRead + u'\r', u",Cat"_s},
        {"eleven fields stop the load", good + u"B|G|1|mp3|Lost|o|1|-4|d|id|http://b\r\n"_s + good,
         u"Line 6 has 11 fields; a station has 12."_s,
         goodRead + u"\nB|G|1|mp3|Lost|o|True|-4|d|id|http://b|"_s, u",Cat"_s},
        {"an empty rating stops the load", u"B|G|1|mp3|C|o|true||d|id|u|w\r\n"_s + good,
         u"Line 5: the rating \"\" is not a whole number."_s, u"B|G|1|mp3|C|o|True|0||||"_s, QString()},
        {"a bad boolean stops the load", u"B|G|1|mp3|C|o|yes|1|d|id|u|w\r\n"_s,
         u"Line 5: the one-file-per-song field \"yes\" is neither True nor False."_s,
         u"B|G|1|mp3|C|o|False|0||||"_s, QString()},
        // TAB becomes a blank, blanks inside fields stay, only InfoUrl is trimmed (its CR stops the trim).
        {"hand-edited values",
         u"A\tB| G |1|mp3|C|o|0|+5||id|u|  w x  |extra\r\nC|G|1|mp3|c|o|fALSE|1||i|u|  w  \r\n"_s,
         {},
         u"A B| G |1|mp3|C|o|False|5||id|u|w x\nC|G|1|mp3|c|o|False|1||i|u|w  \r"_s,
         u",C"_s}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        catalogue = Catalogue();
        prompt.shown.clear();
        writeCatalogue(u"2.1\r\n|\r\n"_s + header + row.stationLines);
        load();
        EXPECT_EQ(loaded(), row.loaded);
        EXPECT_EQ(catalogue.categories.items().join(u','), row.categories);
        expectDamaged(row.why);
    }
}

TEST_F(CatalogueFile, ADamagedFileIsKeptAsideAndTheMessageSaysWhereEachListIs)
{
    const QString native = QDir::toNativeSeparators(path());
    const QByteArray damaged =
        TempProfile::utf16File(u"2.1\r\n|\r\n"_s + good + u"B|G|1\r\nC|G|1|mp3|C|o|x|1||i|u|w\r\n"_s);
    TempProfile::writeFile(path(), damaged);
    load();
    expectDamaged(u"Line 5: the one-file-per-song field \"x\""_s);
    EXPECT_TRUE(
        prompt.texts().value(0).contains(u"The damaged file is kept as "_s + native + u".damaged."_s));
    EXPECT_TRUE(prompt.texts().value(0).contains(u"There is no backup of an earlier list."_s));
    EXPECT_EQ(TempProfile::readFile(path() + u".damaged"_s), damaged);
    // The same file again reuses its copy; another one gets a numbered copy.
    prompt.shown.clear();
    load();
    EXPECT_FALSE(QFile::exists(path() + u".damaged2"_s));
    const QByteArray previous = TempProfile::utf16File(u"2.1\r\n|\r\n"_s + good);
    TempProfile::writeFile(path() + u".bck"_s, previous);
    const QByteArray other = TempProfile::utf16File(u"2.1"_s);
    TempProfile::writeFile(path(), other);
    prompt.shown.clear();
    load();
    expectDamaged(u"The file ends after its first line"_s);
    EXPECT_EQ(TempProfile::readFile(path() + u".damaged2"_s), other);
    EXPECT_TRUE(prompt.texts().value(0).contains(u"The list as it was before the last save is kept in "_s +
                                                 native + u".bck."_s));
    // Saving what could be read keeps that backup: it is the last good list.
    catalogue.save();
    EXPECT_EQ(TempProfile::readFile(path() + u".bck"_s), previous);
    catalogue.save();
    EXPECT_NE(TempProfile::readFile(path() + u".bck"_s), previous) << "a good load backs up as before";
}

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
