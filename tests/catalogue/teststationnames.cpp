#include "catalogue/stationnames.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

TEST(StationNames, StripAndClean)
{
    const QString seventy = u"0123456789"_s.repeated(7);
    // input, stripped, clean name, clean short name
    const QString rows[][4] = {
        {u" Smooth Jazz / Blues: Live"_s, u" Smooth Jazz  Blues Live"_s, u"Smooth Jazz  Blues Live"_s,
         u"Smooth Jazz  Blues Live"_s},
        {u"a/b\\c:d*e?f<g>h|i"_s, u"abcdefghi"_s, u"abcdefghi"_s, u"abcdefghi"_s},
        // Two apostrophes go, one stays, as do double quotes; "/" goes first, so '/' closes up and goes too.
        {u"It's \"x\" ''y''' '/'"_s, u"It's \"x\" y' "_s, u"It's \"x\" y' "_s, u"It's \"x\" y' "_s},
        // Blanks are trimmed before stripping, so a blank that a removed character exposes stays.
        {u"  : x  "_s, u"   x  "_s, u" x"_s, u" x"_s},
        {seventy, seventy, seventy.left(60), seventy.left(30)},
        {u"\tTab\t"_s, u"\tTab\t"_s, u"\tTab\t"_s, u"\tTab\t"_s}};
    for (const auto &[in, stripped, clean, cleanShort] : rows) {
        SCOPED_TRACE(in.toStdString());
        QString text = in;
        StationNames::stripFileNameChars(text);
        EXPECT_EQ(text, stripped);
        EXPECT_EQ(StationNames::cleanName(in), clean);
        EXPECT_EQ(StationNames::cleanShortName(in), cleanShort);
    }
}
