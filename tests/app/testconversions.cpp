#include "app/apperror.h"
#include "app/conversions.h"

#include <gtest/gtest.h>

TEST(Conversions, LeadingNumberReadsDigitsUpToTheFirstOther)
{
    EXPECT_EQ(Convert::LeadingNumber(u"1x"), 1);
    EXPECT_EQ(Convert::LeadingNumber(u"x1"), 0);
    EXPECT_EQ(Convert::LeadingNumber(u"  32 "), 32);
    EXPECT_EQ(Convert::LeadingNumber(u""), 0);
    EXPECT_EQ(Convert::LeadingNumber(u"-7abc"), -7);
    EXPECT_DOUBLE_EQ(Convert::LeadingNumber(u"3.75 stars"), 3.75);
}
