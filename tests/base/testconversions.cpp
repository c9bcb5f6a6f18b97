#include "base/conversions.h"

#include "base/apperror.h"

#include <gtest/gtest.h>

namespace {

TEST(Conversions, TextToBooleanAndNumbers)
{
    for (const char *yes : {"True", "true", "TRUE", "1", " -1 ", "2.5"})
        EXPECT_TRUE(Convert::toBoolean(QString::fromLatin1(yes))) << yes;
    for (const char *no : {"False", "fALSE", "0", "0.0"})
        EXPECT_FALSE(Convert::toBoolean(QString::fromLatin1(no))) << no;
    for (const char *bad : {"yes", "", "on", "1x"})
        EXPECT_THROW(Convert::toBoolean(QString::fromLatin1(bad)), AppError) << bad;
    // Whole numbers round half to even.
    for (const auto &[text, number] : {std::pair{" 3 ", 3}, {"2.5", 2}, {"3.5", 4}, {"-7", -7}})
        EXPECT_EQ(Convert::toInt32(QString::fromLatin1(text)), number) << text;
    for (const char *bad : {"", "3 stars", "99999999999"})
        EXPECT_THROW(Convert::toInt32(QString::fromLatin1(bad)), AppError) << bad;
    for (const auto &[text, number] : {std::pair{"1x", 1}, {"x1", 0}, {"  4.5 stars", 4}})
        EXPECT_EQ(Convert::leadingInt32(QString::fromLatin1(text)), number) << text;
    EXPECT_DOUBLE_EQ(Convert::leadingNumber(u"-7abc"), -7);
}

} // namespace
