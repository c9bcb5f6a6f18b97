#include "catalogue/stationexchange.h"

#include "catalogue/catalogue.h"
#include "support/scriptedprompt.h"
#include "support/tempprofile.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(StationExchange, OutsideTextNeverBreaksACatalogueLine)
{
    const QString plusMinus = Catalogue::defaultSeparator;
    EXPECT_EQ(StationExchange::safeName(u"Radio \u00B1 Eins"_s, plusMinus), u"Radio +- Eins"_s);
    EXPECT_EQ(StationExchange::safeName(u"Jazz\r\nOne\t"_s, plusMinus), u"Jazz One"_s);
    EXPECT_EQ(StationExchange::safeName(QString(10000, u'a'), plusMinus), QString(60, u'a'));
    // A line that begins with "#" is a comment to the reader: the station would vanish.
    EXPECT_EQ(StationExchange::safeName(u"  ## Top: 40 "_s, plusMinus), u"Top 40"_s);
    EXPECT_EQ(StationExchange::safeField(u"a|b"_s, u"|"_s), u"a+-b"_s);
    EXPECT_EQ(StationExchange::safeField(u"a+b-c"_s, u"+"_s), u"a b-c"_s);
    EXPECT_EQ(StationExchange::safeField(QString(10000, u'x'), plusMinus).size(),
              StationExchange::maxFieldLength);
    // Half a surrogate pair is no character.
    EXPECT_EQ(StationExchange::safeField(u"ab\U0001F4FB"_s, plusMinus, 3), u"ab"_s);
}

class AddNew : public ProfileTest
{
protected:
    AddNew()
    {
        QDir().mkpath(profile.dataFolder());
        catalogue.separator = Catalogue::defaultSeparator;
        add(u"A"_s, u"http://a.example/live"_s);
        catalogue.at(add(u"D"_s, u"http://d.example/"_s)).Deleted = true;
    }
    int add(const QString &name, const QString &address)
    {
        return catalogue.append(StationExchange::fromListEntry({name, address}, u"Old"_s));
    }
    Catalogue catalogue;
};

TEST_F(AddNew, KnownAddressesAreSkippedAndTheFileStaysLoadable)
{
    const QList<StationListEntry> entries = {
        {u"Dup"_s, u"HTTP://A.EXAMPLE/LIVE"_s},
        {u"Radio \u00B1 Eins\r\n"_s, u"http://eins.example/\u00B1"_s},
        {QString(), u"http://d.example/"_s}, // the deleted station does not count
        {u"Again"_s, u"http://eins.example/%C2%B1"_s},
        {u"Bad"_s, u"http://x.example/\r\nInjected"_s},
        {u"Empty"_s, QString()},
    };
    QList<Station> stations;
    for (const StationListEntry &e : entries)
        stations.append(StationExchange::fromListEntry(e, u"New \u00B1 Ones"_s));
    const StationExchange::AddResult result = StationExchange::addNew(catalogue, stations);
    EXPECT_EQ(result.added, (QList<int>{3, 4}));
    EXPECT_EQ(result.duplicates, 2);
    EXPECT_EQ(result.refused, 2);
    EXPECT_TRUE(catalogue.dirty);
    EXPECT_TRUE(catalogue.categories.items().contains(u"New +- Ones"_s));

    catalogue.save();
    Catalogue loaded;
    ScriptedPrompt prompt;
    loaded.load(prompt, u"Tunecatch"_s);
    EXPECT_TRUE(prompt.shown.isEmpty());
    ASSERT_EQ(loaded.stationCount(), 3);
    const std::tuple<QString, QString, QString> expected[] = {
        {u"A"_s, u"http://a.example/live"_s, u"Old"_s},
        {u"Radio +- Eins"_s, u"http://eins.example/%C2%B1"_s, u"New +- Ones"_s},
        {u"d.example"_s, u"http://d.example/"_s, u"New +- Ones"_s},
    };
    for (int i = 1; i <= 3; ++i) {
        const Station &s = loaded.at(i);
        EXPECT_EQ(std::tuple(s.Name, s.StreamURL, s.Category), expected[i - 1]);
        EXPECT_EQ(loaded.stationLine(s).count(Catalogue::defaultSeparator), 11);
        EXPECT_TRUE(s.SingleSong);
        EXPECT_EQ(s.OutputFile, Station::defaultOutputFile);
    }
}

TEST(StationExchange, ExportedAddressesArePlayableElsewhere)
{
    Station reference, bare, full;
    reference.StreamURL = u"ssrn#12345.pls"_s;
    bare.StreamURL = u" host.example:8000/live "_s;
    full.StreamURL = u"https://x.example/"_s;
    full.Name = u"Full"_s;
    const QList<StationListEntry> expected = {
        {QString(), u"http://yp.shoutcast.com/sbin/shoutcast-playlist.pls?rn=12345&file=filename.pls"_s},
        {QString(), u"http://host.example:8000/live"_s},
        {u"Full"_s, u"https://x.example/"_s},
    };
    EXPECT_EQ(StationExchange::toListEntries({reference, bare, full}), expected);
}

} // namespace
