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
        {u"It's \"x\" ''y''' '/'"_s, u"It's \"x\" y' "_s, u"It's \"x\" y' "_s, u"It's \"x\" y'"_s},
        // Blanks are trimmed before stripping, so a blank that a removed character exposes stays;
        // a file name is trimmed again.
        {u"  : x  "_s, u"   x  "_s, u" x"_s, u"x"_s},
        {seventy, seventy, seventy.left(60), seventy.left(30)},
        {u"\tTab\t"_s, u"\tTab\t"_s, u"\tTab\t"_s, u"Tab"_s}};
    for (const auto &[in, stripped, clean, cleanShort] : rows) {
        SCOPED_TRACE(in.toStdString());
        QString text = in;
        StationNames::stripFileNameChars(text);
        EXPECT_EQ(text, stripped);
        EXPECT_EQ(StationNames::cleanName(in), clean);
        EXPECT_EQ(StationNames::cleanShortName(in), cleanShort);
    }
}

TEST(StationNames, FileNamePartsNeverNameAnotherFolder)
{
    const QString smile = u"\U0001F600"_s;
    const struct
    {
        QString in, part;
    } rows[] = {{u"../../x"_s, u"x"_s},
                {u".."_s, u"_"_s},
                {u" . .hidden"_s, u"hidden"_s},
                {u"abc"_s + QChar(0) + u"def"_s, u"abcdef"_s},
                {u"Artist\tName\r\n- Song\x1b\x7f\u0085!"_s, u"Artist Name  - Song!"_s},
                {u"   "_s, u"_"_s},
                {QString(), u"_"_s},
                {u"/\x01/"_s, u"_"_s},
                // A cut never splits a character in two.
                {u"x"_s.repeated(29) + smile, u"x"_s.repeated(29)},
                {u"x"_s.repeated(28) + smile + u"y"_s, u"x"_s.repeated(28) + smile}};
    for (const auto &[in, part] : rows) {
        SCOPED_TRACE(in.toStdString());
        EXPECT_EQ(StationNames::cleanShortName(in), part);
    }
    EXPECT_EQ(StationNames::fileNamePart(u"../My Station: Live"_s, 60), u"My Station Live"_s);
}
