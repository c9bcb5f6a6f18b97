#include "catalogue/catalogue.h"

#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace {

const QString Damaged = QStringLiteral("Station file appears damaged.. attempting to recover");
const QString Header = QStringLiteral("# two first lines :  version  and seperator.\r\n"
                                      "#format is:  Name Genre BitRate Format Category OutputFile SingleSong "
                                      "Rating LastDate CallSign StreamURL InfoUrl\r\n");

// The catalogue's file encoding, written out by hand: FF FE, then UTF-16 little-endian units.
QByteArray utf16WithMark(const QString &text)
{
    QByteArray bytes("\xFF\xFE");
    for (const QChar c : text) {
        bytes.append(static_cast<char>(c.unicode() & 0xFF));
        bytes.append(static_cast<char>(c.unicode() >> 8));
    }
    return bytes;
}

// Name, Genre "G", BitRate "128", Format "mp3", the given Category, OutputFile "o", SingleSong,
// Rating, CallSign "id", StreamURL "u", InfoUrl.
Station station(const QString &name, const QString &category, bool singleSong, qint32 rating,
                const QString &infoUrl)
{
    Station s;
    s.Name = name;
    s.Genre = QStringLiteral("G");
    s.BitRate = QStringLiteral("128");
    s.Format = QStringLiteral("mp3");
    s.Category = category;
    s.OutputFile = QStringLiteral("o");
    s.SingleSong = singleSong;
    s.Rating = rating;
    s.CallSign = QStringLiteral("id");
    s.StreamURL = QStringLiteral("u");
    s.InfoUrl = infoUrl;
    return s;
}

class CatalogueFile : public ProfileTest
{
protected:
    QString path() const { return profile.dataFolder() + QStringLiteral("Stations.txt"); }
    void writeCatalogue(const QString &text) { TempProfile::writeFile(path(), utf16WithMark(text)); }
    void load() { catalogue.Load(prompt, QStringLiteral("Tunecatch")); }
    // The stations in memory as the writer would put them, one per line.
    QString loaded() const
    {
        QStringList lines;
        for (int i = 1; i <= catalogue.StationCount(); ++i)
            lines.append(catalogue.StationLine(catalogue.at(i)));
        return lines.join(u'\n');
    }
    void expectDamaged(bool damaged) const
    {
        EXPECT_EQ(prompt.texts(), damaged ? QStringList{Damaged} : QStringList{});
        if (damaged) {
            EXPECT_EQ(prompt.shown.constFirst().title, QStringLiteral("Tunecatch"));
        }
    }

    Catalogue catalogue;
    ScriptedPrompt prompt;
};

struct LoadRow
{
    const char *name;
    QString stationLines;
    bool damaged;
    QString loaded; // the stations as the writer would put them, one per line
    QStringList categories;
};

class LoadLines : public CatalogueFile, public ::testing::WithParamInterface<LoadRow>
{
};

const QString Good = QStringLiteral("A|G|128|mp3|Cat|out|True|1||id|http://a|http://i\r\n");
const QString GoodRead = QStringLiteral("A|G|128|mp3|Cat|out|True|1||id|http://a|http://i");

} // namespace

TEST_F(CatalogueFile, SaveWritesTheExactFileAndKeepsTheOldOneAsBackup)
{
    QDir().mkpath(profile.dataFolder());
    catalogue.Append(station(QStringLiteral("Jazz One"), QStringLiteral("Favourites"), true, 3,
                             QStringLiteral("http://jazz.one")));
    Station gone = station(QStringLiteral("Gone"), {}, true, 0, {});
    gone.Deleted = true;
    catalogue.Append(gone);
    catalogue.Append(station(QStringLiteral("Low"), {}, false, -2, {}));
    catalogue.Dirty = true;

    catalogue.Save();
    const QByteArray first = TempProfile::readFile(path());
    EXPECT_EQ(first, utf16WithMark(
                         QStringLiteral("2.1\r\n\u00B1\r\n") + Header +
                         QStringLiteral("Jazz One\u00B1G\u00B1128\u00B1mp3\u00B1Favourites\u00B1o\u00B1"
                                        "True\u00B13\u00B1\u00B1id\u00B1u\u00B1http://jazz.one\r\n"
                                        "Low\u00B1G\u00B1128\u00B1mp3\u00B1\u00B1o\u00B1False\u00B1-2\u00B1"
                                        "\u00B1id\u00B1u\u00B1\r\n")));
    EXPECT_EQ(catalogue.Separator, QStringLiteral("\u00B1"));
    EXPECT_FALSE(catalogue.Dirty);
    EXPECT_FALSE(QFile::exists(path() + QStringLiteral(".bck")));

    catalogue.Version = QStringLiteral("9.9");
    catalogue.Separator = QStringLiteral("|");
    catalogue.Save();
    EXPECT_EQ(TempProfile::readFile(path() + QStringLiteral(".bck")), first);
    // The version written is always 2.1; the separator is the one held.
    EXPECT_TRUE(TempProfile::readFile(path()).startsWith(
        utf16WithMark(QStringLiteral("2.1\r\n|\r\n") + Header + QStringLiteral("Jazz One|G|"))));
}

TEST_F(CatalogueFile, SaveAndLoadKeepEverythingButGrowACrOnTheLastInfoUrl)
{
    QDir().mkpath(profile.dataFolder());
    catalogue.Append(
        station(QStringLiteral(" Spaced  "), QStringLiteral("Jazz"), true, -7, QStringLiteral("i1")));
    catalogue.Append(station(QStringLiteral("Gone"), QStringLiteral("Rock"), false, 0, {}));
    catalogue.Append(station(QStringLiteral("Last"), QStringLiteral("jazz"), false, 2, QStringLiteral("i3")));
    catalogue.at(2).Deleted = true;

    catalogue.Separator = QStringLiteral("|");

    catalogue.Save();
    load();
    EXPECT_EQ(loaded(),
              QStringLiteral(
                  " Spaced  |G|128|mp3|Jazz|o|True|-7||id|u|i1\nLast|G|128|mp3|jazz|o|False|2||id|u|i3\r"));
    EXPECT_EQ(catalogue.Categories.items(), (QStringList{QString(), QStringLiteral("Jazz")}));

    catalogue.Save();
    load();
    EXPECT_EQ(loaded(),
              QStringLiteral(
                  " Spaced  |G|128|mp3|Jazz|o|True|-7||id|u|i1\nLast|G|128|mp3|jazz|o|False|2||id|u|i3\r\r"));
    expectDamaged(false);
}

TEST_F(CatalogueFile, MissingFileIsDamagedAndKeepsVersionAndSeparator)
{
    catalogue.Append(station(QStringLiteral("Old"), {}, true, 0, {}));
    catalogue.Version = QStringLiteral("v");
    catalogue.Separator = QStringLiteral("s");
    load();
    EXPECT_EQ(catalogue.StationCount(), 0);
    EXPECT_EQ(catalogue.Version, QStringLiteral("v"));
    EXPECT_EQ(catalogue.Separator, QStringLiteral("s"));
    expectDamaged(true);
}

TEST_F(CatalogueFile, TwoLineFileIsAnEmptyCatalogue)
{
    writeCatalogue(QStringLiteral("1.0\r\n|\r\n"));
    load();
    EXPECT_EQ(catalogue.StationCount(), 0);
    EXPECT_EQ(catalogue.Version, QStringLiteral("1.0"));
    // The file's unread last byte leaves the final line's CR in place.
    EXPECT_EQ(catalogue.Separator, QStringLiteral("|\r"));
    expectDamaged(false);
}

TEST_F(CatalogueFile, TheSecondLineIsTheWholeSeparator)
{
    // "a<b" would split on a search for the first character alone.
    const QStringList fields = QStringLiteral("A,G,1,a<b,,o,True,1,,,u,w").split(u',');
    // An empty separator never splits a line, so no station is read.
    for (const QString &separator : {QStringLiteral("<>"), QStringLiteral("\u00B1"), QString()}) {
        writeCatalogue(QStringLiteral("2.1\r\n") + separator + QStringLiteral("\r\n") +
                       fields.join(separator) + QStringLiteral("\r\n#\r\n"));
        load();
        EXPECT_EQ(loaded(), separator.isEmpty() ? QString() : fields.join(separator));
    }
    expectDamaged(false);
}

TEST_F(CatalogueFile, CategoryKeysIgnoreCaseAndKeepFirstSeenOrder)
{
    CategoryList list;
    EXPECT_TRUE(list.add(QStringLiteral("Talk")));
    EXPECT_FALSE(list.add(QStringLiteral("TALK")));
    EXPECT_FALSE(list.add(QString()));
    EXPECT_TRUE(list.add(QStringLiteral("Jazz")));
    EXPECT_EQ(list.items(), (QStringList{QString(), QStringLiteral("Talk"), QStringLiteral("Jazz")}));
}

TEST_P(LoadLines, ReadsAsTheFileSays)
{
    const LoadRow &row = GetParam();
    writeCatalogue(QStringLiteral("2.1\r\n|\r\n") + Header + row.stationLines);
    load();
    EXPECT_EQ(loaded(), row.loaded);
    EXPECT_EQ(catalogue.Categories.items(), row.categories);
    expectDamaged(row.damaged);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LoadLines,
    ::testing::Values(
        LoadRow{
            "CommentsAndBlankLines",
            QStringLiteral("   #B|G|1|mp3|C|o|True|1||i|u|w\r\n\t#B|G|1|mp3|C|o|True|1||i|u|w\r\n  \r\n") +
                Good,
            false,
            GoodRead + u'\r',
            {QString(), QStringLiteral("Cat")}},
        LoadRow{"TenFieldsSkipped",
                QStringLiteral("B|G|1|mp3|C|o|True|1||i\r\n") + Good,
                false,
                GoodRead + u'\r',
                {QString(), QStringLiteral("Cat")}},
        LoadRow{"ElevenFieldsStopTheLoad",
                Good + QStringLiteral("B|G|1|mp3|Lost|o|1|-4|d|id|http://b\r\n") + Good,
                true,
                GoodRead + QStringLiteral("\nB|G|1|mp3|Lost|o|True|-4|d|id|http://b|"),
                {QString(), QStringLiteral("Cat")}},
        LoadRow{"EmptyRatingStopsTheLoad",
                QStringLiteral("B|G|1|mp3|C|o|true||d|id|u|w\r\n") + Good,
                true,
                QStringLiteral("B|G|1|mp3|C|o|True|0||||"),
                {QString()}},
        LoadRow{"BadBooleanStopsTheLoad",
                QStringLiteral("B|G|1|mp3|C|o|yes|1|d|id|u|w\r\n"),
                true,
                QStringLiteral("B|G|1|mp3|C|o|False|0||||"),
                {QString()}},
        // TAB becomes a blank, blanks inside fields stay, only InfoUrl is trimmed (its CR stops the trim).
        LoadRow{"HandEditedValues",
                QStringLiteral(
                    "A\tB| G |1|mp3|C|o|0|+5||id|u|  w x  |extra\r\nC|G|1|mp3|c|o|fALSE|1||i|u|  w  \r\n"),
                false,
                QStringLiteral("A B| G |1|mp3|C|o|False|5||id|u|w x\nC|G|1|mp3|c|o|False|1||i|u|w  \r"),
                {QString(), QStringLiteral("C")}}),
    [](const ::testing::TestParamInfo<LoadRow> &info) { return std::string(info.param.name); });
