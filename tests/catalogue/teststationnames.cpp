#include "catalogue/stationnames.h"

#include <gtest/gtest.h>

TEST(StationNames, StripAndClean)
{
    const QString seventy = QStringLiteral("0123456789").repeated(7);
    // input, stripped, clean name, clean short name
    const QString rows[][4] = {
        {QStringLiteral(" Smooth Jazz / Blues: Live"), QStringLiteral(" Smooth Jazz  Blues Live"),
         QStringLiteral("Smooth Jazz  Blues Live"), QStringLiteral("Smooth Jazz  Blues Live")},
        {QStringLiteral("a/b\\c:d*e?f<g>h|i"), QStringLiteral("abcdefghi"), QStringLiteral("abcdefghi"),
         QStringLiteral("abcdefghi")},
        // Two apostrophes go, one stays, as do double quotes; "/" goes first, so '/' closes up and goes too.
        {QStringLiteral("It's \"x\" ''y''' '/'"), QStringLiteral("It's \"x\" y' "),
         QStringLiteral("It's \"x\" y' "), QStringLiteral("It's \"x\" y' ")},
        // Blanks are trimmed before stripping, so a blank that a removed character exposes stays.
        {QStringLiteral("  : x  "), QStringLiteral("   x  "), QStringLiteral(" x"), QStringLiteral(" x")},
        {seventy, seventy, seventy.left(60), seventy.left(30)},
        {QStringLiteral("\tTab\t"), QStringLiteral("\tTab\t"), QStringLiteral("\tTab\t"),
         QStringLiteral("\tTab\t")},
    };
    for (const auto &[in, stripped, clean, cleanShort] : rows) {
        SCOPED_TRACE(in.toStdString());
        QString text = in;
        StationNames::StripFileNameChars(text);
        EXPECT_EQ(text, stripped);
        EXPECT_EQ(StationNames::CleanName(in), clean);
        EXPECT_EQ(StationNames::CleanShortName(in), cleanShort);
    }
}
