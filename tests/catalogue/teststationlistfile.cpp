#include "catalogue/stationlistfile.h"

#include <QStringEncoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

using namespace Qt::StringLiterals;

void PrintTo(const StationListEntry &e, std::ostream *os)
{
    *os << '{' << e.name.toStdString() << ", " << e.address.toStdString() << '}';
}

namespace {

using Format = StationListFile::Format;

const QList<StationListEntry> twoEntries = {
    {u"Jazz One"_s, u"http://jazz.example:8000/stream"_s},
    {u"Café Ünïcode & \"Friends\""_s, u"https://radio.example/live?id=1&fmt=mp3"_s},
};

// The two entries as each format holds them, written out by hand.
const std::pair<Format, QByteArray> handWritten[] = {
    {Format::M3u8, "#EXTM3U\n"
                   "#EXTINF:-1,Jazz One\n"
                   "http://jazz.example:8000/stream\n"
                   "#EXTINF:-1,Café Ünïcode & \"Friends\"\n"
                   "https://radio.example/live?id=1&fmt=mp3\n"},
    {Format::Pls, "[playlist]\n"
                  "File1=http://jazz.example:8000/stream\n"
                  "Title1=Jazz One\n"
                  "Length1=-1\n"
                  "File2=https://radio.example/live?id=1&fmt=mp3\n"
                  "Title2=Café Ünïcode & \"Friends\"\n"
                  "Length2=-1\n"
                  "NumberOfEntries=2\n"
                  "Version=2\n"},
    {Format::Xspf, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<playlist xmlns=\"http://xspf.org/ns/0/\" version=\"1\">\n"
                   "    <trackList>\n"
                   "        <track>\n"
                   "            <location>http://jazz.example:8000/stream</location>\n"
                   "            <title>Jazz One</title>\n"
                   "        </track>\n"
                   "        <track>\n"
                   "            <location>https://radio.example/live?id=1&amp;fmt=mp3</location>\n"
                   "            <title>Café Ünïcode &amp; &quot;Friends&quot;</title>\n"
                   "        </track>\n"
                   "    </trackList>\n"
                   "</playlist>\n"},
};

TEST(StationListFile, EachFormatWritesAndReadsBackTheHandWrittenFile)
{
    for (const auto &[format, file] : handWritten) {
        SCOPED_TRACE(file.left(10).toStdString());
        EXPECT_EQ(StationListFile::write(format, twoEntries).toStdString(), file.toStdString());
        const StationListFile::ReadResult read = StationListFile::read(file);
        EXPECT_EQ(read.entries, twoEntries);
        EXPECT_EQ(read.refused, 0);
        EXPECT_TRUE(read.error.isEmpty());
    }
}

TEST(StationListFile, ListsAsOtherProgramsWriteThemAreRead)
{
    const struct
    {
        QByteArray file;
        QList<StationListEntry> entries;
        int refused;
    } rows[] = {
        // Quoted attributes may hold commas; local files are no stations.
        {"#EXTM3U\r\n"
         "#EXTINF:-1 logo=\"http://l.example/a,b.png\" group-title=\"Jazz, Blues\",Blue Note\r\n"
         "http://blue.example/live\r\n"
         "#EXTINF:123,Local file\r\nmusic/track.mp3\r\nfile:///home/u/x.mp3\r\n\r\n"
         "# a comment\r\nhttps://plain.example/stream\r\n",
         {{u"Blue Note"_s, u"http://blue.example/live"_s}, {{}, u"https://plain.example/stream"_s}},
         2},
        {"http://a.example/1\nhttp://b.example/2",
         {{{}, u"http://a.example/1"_s}, {{}, u"http://b.example/2"_s}},
         0},
        // Every entry in the order of its number, whatever the count line says.
        {"[Playlist]\r\nNumberOfEntries=1\r\nfile2=http://two.example/\r\nTitle2=Two\r\n"
         "File1=http://one.example/\r\nFILE10=http://ten.example/\r\nTitle10=Ten\r\nVersion=2\r\n",
         {{{}, u"http://one.example/"_s},
          {u"Two"_s, u"http://two.example/"_s},
          {u"Ten"_s, u"http://ten.example/"_s}},
         0},
        {"<?xml version=\"1.0\"?>\n<playlist version=\"1\" xmlns=\"http://xspf.org/ns/0/\"><title>M</title>"
         "<trackList><track><location>file:///a.mp3</location><location>http://a.example/live</location>"
         "<title>A</title><image>http://a.example/i.png</image></track>"
         "<track><location>relative/b.mp3</location></track><track><title>None</title></track>"
         "</trackList></playlist>",
         {{u"A"_s, u"http://a.example/live"_s}},
         1},
        {QStringEncoder(QStringConverter::Utf16,
                        QStringConverter::Flag::WriteBom)(u"#EXTM3U\n#EXTINF:-1,Ö1\nhttp://oe1.example/\n"_s),
         {{u"Ö1"_s, u"http://oe1.example/"_s}},
         0},
        {"[playlist]\nFile1=http://cafe.example/\nTitle1=Caf\xe9\n",
         {{u"Café"_s, u"http://cafe.example/"_s}},
         0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.file.left(30).toStdString());
        const StationListFile::ReadResult read = StationListFile::read(row.file);
        EXPECT_EQ(read.entries, row.entries);
        EXPECT_EQ(read.refused, row.refused);
        EXPECT_TRUE(read.error.isEmpty()) << read.error.toStdString();
    }
}

TEST(StationListFile, WhatIsNoStationListGivesAReasonAndNoEntries)
{
    const std::pair<QByteArray, QString> rows[] = {
        {QByteArray("\x7f"
                    "ELF\x02\x01\x01\x00\x00\x00http://x.example/\n",
                    26),
         u"not a station list"_s},
        {"Dear friend,\nthis is a letter.\nhttp://x.example/\n", u"not a station list"_s},
        {"", u"not a station list"_s},
        {"<html><body><a href=\"http://x.example/\">x</a></body></html>", u"not a station list"_s},
        {"<playlist><trackList><track><location>http://a.example/</location></track>", u"damaged"_s},
        {"<playlist><trackList/></playlist><more/>", u"damaged"_s},
        {"#EXTM3U\nmusic/a.mp3\nfile:///b.mp3\n", u"every entry is a file"_s},
        {"[playlist]\nNumberOfEntries=0\n", u"no stations"_s},
        {QByteArray(StationListFile::maxFileBytes + 1, '#'), u"larger"_s},
    };
    for (const auto &[file, reason] : rows) {
        SCOPED_TRACE(file.left(30).toStdString());
        const StationListFile::ReadResult read = StationListFile::read(file);
        EXPECT_TRUE(read.entries.isEmpty());
        EXPECT_TRUE(read.error.contains(reason)) << read.error.toStdString();
    }
}

TEST(StationListFile, AListBeyondTheBoundIsRefusedWhole)
{
    QByteArray file = "#EXTM3U\n";
    for (int i = 0; i < StationListFile::maxEntries; ++i)
        file += "#EXTINF:-1,S\nhttp://s.example/" + QByteArray::number(i) + '\n';
    EXPECT_EQ(StationListFile::read(file).entries.size(), StationListFile::maxEntries);
    file += "http://one.more.example/\n";
    const StationListFile::ReadResult read = StationListFile::read(file);
    EXPECT_TRUE(read.entries.isEmpty());
    EXPECT_FALSE(read.error.isEmpty());
}

TEST(StationListFile, FilesAreWrittenWholeInTheFormatTheirNameSays)
{
    QTemporaryDir dir;
    for (const auto &[name, format] : {std::pair{u"a.m3u8"_s, Format::M3u8},
                                       {u"b.PLS"_s, Format::Pls},
                                       {u"c.xspf"_s, Format::Xspf},
                                       {u"d.m3u"_s, Format::M3u8}}) {
        const QString path = dir.filePath(name);
        EXPECT_EQ(StationListFile::formatForPath(path), format);
        EXPECT_EQ(StationListFile::writeFile(path, format, twoEntries), QString());
        EXPECT_EQ(StationListFile::readFile(path).entries, twoEntries);
    }
    // A name broken over lines stays on its own line.
    const QList<StationListEntry> broken = {{u"Line\r\nBreak"_s, u"http://x.example/"_s}};
    for (const Format format : {Format::M3u8, Format::Pls, Format::Xspf})
        EXPECT_EQ(StationListFile::read(StationListFile::write(format, broken)).entries.value(0).name,
                  u"Line  Break"_s);
    EXPECT_FALSE(
        StationListFile::writeFile(dir.filePath(u"missing/x.pls"_s), Format::Pls, twoEntries).isEmpty());
    EXPECT_FALSE(StationListFile::readFile(dir.filePath(u"missing.pls"_s)).error.isEmpty());
}

} // namespace
