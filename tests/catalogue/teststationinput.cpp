#include "catalogue/stationinput.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

using Field = StationInput::Field;

Station valid()
{
    Station s = Station::newStation();
    s.Name = u"Groove Salad"_s;
    s.StreamURL = u"http://ice1.example.org:8000/groove"_s;
    s.BitRate = u"128"_s;
    s.InfoUrl = u"https://example.org/groove"_s;
    return s;
}

TEST(StationInput, AcceptsTheAddressesThePlayersAndTheRecorderOpen)
{
    for (const QString &address :
         {u"http://ice1.example.org:8000/groove"_s, u"HTTPS://secure.example.org/live"_s,
          u"icyx://old.example.org:8080/"_s, u"ssrn#12345.pls"_s, u"http://127.0.0.1/list.pls"_s}) {
        Station s = valid();
        s.StreamURL = address;
        EXPECT_EQ(StationInput::check(s, u"\u00b1"_s).field, Field::None) << address.toStdString();
    }
    Station blank = valid();
    blank.BitRate.clear();
    blank.InfoUrl.clear();
    blank.Genre = u"Rock & Roll: \"live\""_s;
    EXPECT_TRUE(StationInput::check(blank, u"\u00b1"_s).message.isEmpty()) << "optional fields may be empty";
    // A page address without its scheme is one the browser takes as it stands.
    for (const QString &page : {u"www.example.org/radio"_s, u"i"_s}) {
        blank.InfoUrl = page;
        EXPECT_EQ(StationInput::check(blank, u"\u00b1"_s).field, Field::None) << page.toStdString();
    }
}

TEST(StationInput, RefusesWhatCannotPlayOrWouldBreakTheFileWithTheFieldToFix)
{
    const struct
    {
        Field field;
        QString Station::*member;
        QString value;
        QString message; // empty: any message naming the field
    } rows[] = {
        {Field::Name, &Station::Name, u"Groove \u00b1 Salad"_s,
         u"Name may not hold \"\u00b1\": it separates the fields in the station list."_s},
        {Field::Name, &Station::Name, u"Groove\r\nSalad"_s, u"Name may not hold a line break."_s},
        {Field::Category, &Station::Category, u"a\nb"_s, u"Category may not hold a line break."_s},
        {Field::OutputFile, &Station::OutputFile, u".\\%STATION%\u00b1.mp3"_s, {}},
        {Field::Name, &Station::Name, u"  "_s, u"A station needs a name."_s},
        {Field::StreamURL, &Station::StreamURL, {}, u"A station needs a stream address."_s},
        {Field::StreamURL, &Station::StreamURL, u"file:///home/me/song.mp3"_s, {}},
        {Field::StreamURL, &Station::StreamURL, u"javascript:alert(1)"_s, {}},
        {Field::StreamURL, &Station::StreamURL, u"ice1.example.org:8000/groove"_s, {}},
        {Field::StreamURL, &Station::StreamURL, u"http://"_s, {}},
        {Field::BitRate, &Station::BitRate, u"128k"_s, u"The bit rate is a number of kbit/s, such as 128."_s},
        {Field::InfoUrl, &Station::InfoUrl, u"javascript:alert(document.cookie)"_s, {}},
        {Field::InfoUrl, &Station::InfoUrl, u"file:///etc/passwd"_s, {}},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value.toStdString());
        Station s = valid();
        s.*row.member = row.value;
        const StationInput::Problem problem = StationInput::check(s, u"\u00b1"_s);
        EXPECT_EQ(problem.field, row.field);
        if (row.message.isEmpty())
            EXPECT_TRUE(problem.message.contains(StationInput::label(row.field), Qt::CaseInsensitive))
                << problem.message.toStdString();
        else
            EXPECT_EQ(problem.message, row.message);
    }
    // The catalogue's own separator counts, whatever it is.
    Station piped = valid();
    piped.Genre = u"Rock|Pop"_s;
    EXPECT_EQ(StationInput::check(piped, u"|"_s).field, Field::Genre);
    EXPECT_EQ(StationInput::check(piped, u"\u00b1"_s).field, Field::None);
}

} // namespace
