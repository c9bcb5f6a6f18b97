#include "ui/stations/columnstate.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(ColumnState, RoundTripsAndRefusesWhatDoesNotDescribeTheColumns)
{
    const ColumnState state{{23, 300, 46}, {2, 0, 1}, 1, true};
    const QString text = state.toText();
    EXPECT_EQ(text, u"23 300 46;2 0 1;1 d"_s);
    const auto back = ColumnState::fromText(text, 3);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->widths, state.widths);
    EXPECT_EQ(back->positions, state.positions);
    EXPECT_EQ(back->sortIndex, 1);
    EXPECT_TRUE(back->descending);
    EXPECT_EQ(ColumnState::fromText(u"23 300 46;0 1 2;-1"_s, 3)->sortIndex, -1);

    const QString refused[] = {
        u""_s,
        u"23 300;0 1;-1"_s,            // two columns, not three
        u"23 300 46;0 1 1;-1"_s,       // a position twice
        u"23 300 46;0 1 3;-1"_s,       // a position past the end
        u"23 0 46;0 1 2;-1"_s,         // a width below the least
        u"23 99999 46;0 1 2;-1"_s,     // a width past the most
        u"23 x 46;0 1 2;-1"_s,         // not a number
        u"23 300 46;0 1 2;3 a"_s,      // sorted by a column not there
        u"23 300 46;0 1 2;1 up"_s,     // neither ascending nor descending
        u"23 300 46;0 1 2;-1;extra"_s, // a fourth part
    };
    for (const QString &line : refused)
        EXPECT_FALSE(ColumnState::fromText(line, 3)) << line.toStdString();
}

} // namespace
