#include "ui/windowplacement.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

TEST(WindowPlacement, ReadsOnlyWholeSizesAndKeepsTheMaximisedMark)
{
    const auto saved = WindowPlacement::fromText(WindowPlacement::toText({QRect(-40, 30, 720, 520), true}));
    ASSERT_TRUE(saved);
    EXPECT_EQ(saved->rect, QRect(-40, 30, 720, 520));
    EXPECT_TRUE(saved->maximized);
    EXPECT_FALSE(WindowPlacement::fromText(u"1,2,3,4"_s)->maximized);
    for (const QString &text :
         {u""_s, u"1,2,3"_s, u"a,2,3,4"_s, u"1,2,0,4"_s, u"1,2,3,-4"_s, u"1,2,3,4,min"_s})
        EXPECT_FALSE(WindowPlacement::fromText(text)) << text.toStdString();
}

TEST(WindowPlacement, FitsARectangleOntoTheScreenNeverBelowTheMinimum)
{
    const QRect screen(0, 0, 1366, 768);
    const QSize minimum(640, 300);
    const struct
    {
        QRect saved, fitted;
    } rows[] = {
        {{100, 50, 800, 600}, {100, 50, 800, 600}},        // already on the screen
        {{-4000, -3000, 99999, 99999}, {0, 0, 1366, 768}}, // larger, and off to the top left
        {{1200, 700, 800, 600}, {566, 168, 800, 600}},     // off to the bottom right
        {{10, 10, 100, 100}, {10, 10, 640, 300}},          // below the minimum
    };
    for (const auto &row : rows)
        EXPECT_EQ(WindowPlacement::fitted(row.saved, screen, minimum), row.fitted) << row.saved.x();
    EXPECT_EQ(WindowPlacement::fitted({50, 60, 800, 600}, QRect(1366, 0, 1920, 1080), minimum),
              QRect(1366, 60, 800, 600))
        << "onto a second screen";
}

} // namespace
