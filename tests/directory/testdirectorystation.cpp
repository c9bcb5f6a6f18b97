#include "directory/directorystation.h"

#include "catalogue/catalogue.h"
#include "catalogue/stationexchange.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

const QByteArray answer = R"([
 {"stationuuid":"u1","name":"Jazz \u00b1 One\r\n","url":"http://j.example/list.pls","url_resolved":"http://j.example/live",
  "homepage":"https://j.example/ ","favicon":"https://j.example/i.png","tags":"jazz, smooth jazz","country":"Austria",
  "language":"german,english","codec":"AAC+","bitrate":128,"votes":12,"clickcount":7,"extra":{"nested":[1,2]}},
 {"name":42,"url":"http://only.example/","bitrate":"96","votes":-3,"clickcount":1e20,"tags":null},
 {"name":"No address"},
 "not an object",
 7,
 {"name":"Second","url":"","url_resolved":"http://second.example/"}
])";

DirectoryStation fullStation()
{
    return {u"u1"_s,
            u"Jazz \u00B1 One\r\n"_s,
            u"http://j.example/list.pls"_s,
            u"http://j.example/live"_s,
            u"https://j.example/ "_s,
            u"https://j.example/i.png"_s,
            u"jazz, smooth jazz"_s,
            u"Austria"_s,
            u"german,english"_s,
            u"AAC+"_s,
            128,
            12,
            7};
}

TEST(DirectoryJson, StationsAreReadFromWhateverTheServerSends)
{
    DirectoryStation onlyUrl;
    onlyUrl.url = u"http://only.example/"_s;
    onlyUrl.bitrate = 96;
    DirectoryStation second;
    second.name = u"Second"_s;
    second.urlResolved = u"http://second.example/"_s;

    const auto parsed = DirectoryJson::stations(answer, 10);
    EXPECT_TRUE(parsed.error.isEmpty());
    EXPECT_EQ(parsed.values, (QList<DirectoryStation>{fullStation(), onlyUrl, second}));
    EXPECT_EQ(DirectoryJson::stations(answer, 2).values.size(), 2);

    const QByteArray huge = R"([{"name":")" + QByteArray(10000, 'n') + R"(","url":"http://h.example/"}])";
    EXPECT_EQ(DirectoryJson::stations(huge, 10).values.value(0).name.size(), DirectoryJson::maxTextLength);

    for (const auto &[json, reason] : {std::pair{QByteArray(R"([{"name":)"), u"damaged"_s},
                                       {QByteArray(), u"damaged"_s},
                                       {QByteArray(R"({"name":"x"})"), u"not a list"_s}}) {
        const auto failed = DirectoryJson::stations(json, 10);
        EXPECT_TRUE(failed.values.isEmpty());
        EXPECT_TRUE(failed.error.contains(reason)) << failed.error.toStdString();
    }
}

TEST(DirectoryJson, FilterValuesNeedAName)
{
    const QByteArray json = R"([{"name":"jazz","stationcount":12},{"name":" ","stationcount":3},
        {"name":"rock","stationcount":"x"},{"stationcount":4}])";
    EXPECT_EQ(DirectoryJson::filterValues(json, 10).values,
              (QList<DirectoryFilterValue>{{u"jazz"_s, 12}, {u"rock"_s, 0}}));
    EXPECT_EQ(DirectoryJson::filterValues(json, 1).values.size(), 1);
}

TEST(DirectoryStation, AResultBecomesACatalogueStation)
{
    const Station s = toCatalogueStation(fullStation());
    EXPECT_EQ(QStringList({s.Genre, s.BitRate, s.Format, s.Category, s.StreamURL, s.InfoUrl, s.OutputFile}),
              QStringList({u"jazz"_s, u"128"_s, u"aac"_s, u"Directory"_s, u"http://j.example/live"_s,
                           u"https://j.example/"_s, Station::defaultOutputFile}));
    EXPECT_TRUE(s.SingleSong);
    EXPECT_EQ(toCatalogueStation(fullStation(), u"Mine"_s).Category, u"Mine"_s);

    DirectoryStation bare;
    bare.url = u" http://bare.example/ "_s;
    EXPECT_EQ(toCatalogueStation(bare).StreamURL, u"http://bare.example/"_s);
    EXPECT_EQ(toCatalogueStation(bare).BitRate, QString());

    for (const auto &[codec, format] : {std::pair{u"MP3"_s, u"mp3"_s},
                                        {u"OGG"_s, u"ogg"_s},
                                        {u"UNKNOWN"_s, QString()},
                                        {QString(), QString()},
                                        {u"MP3,H.264"_s, u"mp3"_s}})
        EXPECT_EQ(formatFromCodec(codec), format) << codec.toStdString();

    // Added to a catalogue, the separator in its name is replaced and the line stays whole.
    Catalogue catalogue;
    catalogue.separator = Catalogue::defaultSeparator;
    const auto added = StationExchange::addNew(catalogue, {s, toCatalogueStation(fullStation())});
    ASSERT_EQ(added.added, QList<int>{1});
    EXPECT_EQ(added.duplicates, 1);
    EXPECT_EQ(catalogue.at(1).Name, u"Jazz +- One"_s);
    EXPECT_EQ(catalogue.stationLine(catalogue.at(1)).count(Catalogue::defaultSeparator), 11);
}

} // namespace
