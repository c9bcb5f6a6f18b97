#include "recorder/recorderstats.h"

#include <gtest/gtest.h>

using namespace RecorderStats;

TEST(RecorderStats, TimesAndSizes)
{
    const std::pair<qint32, const char16_t *> times[] = {
        {0, u"0:00"}, {59, u"0:59"}, {60, u"1:00"}, {3600, u"60:00"}, {7507, u"125:07"}};
    for (const auto &[seconds, text] : times)
        EXPECT_EQ(MakeTime(seconds), QStringView(text)) << seconds;
    const std::pair<double, const char16_t *> sizes[] = {
        {0, u"0 KB"}, {1536, u"1.5 KB"}, {949999, u"927.73 KB"}, {950000, u"0.91 MB"}, {10485760, u"10 MB"}};
    for (const auto &[bytes, text] : sizes)
        EXPECT_EQ(storedSizeText(bytes), QStringView(text)) << bytes;
}

TEST(RecorderStats, ElapsedTimeComesFromTheBitRate)
{
    EXPECT_EQ(elapsedSeconds(16000 * 90, 128), 90);
    EXPECT_EQ(elapsedSeconds(16000 * 90 + 8000, 128), 90); // 90.5 rounds to even
    EXPECT_EQ(elapsedSeconds(1000, 0), std::nullopt);
}

TEST(RecorderStats, LimitProgressIsClampedAndNeedsALimit)
{
    EXPECT_EQ(limitProgress(Limit::Minutes, 2, 60, 0), 50);
    EXPECT_EQ(limitProgress(Limit::Minutes, 2, 600, 0), 100);
    EXPECT_EQ(limitProgress(Limit::Minutes, 2, std::nullopt, 0), std::nullopt);
    EXPECT_EQ(limitProgress(Limit::Minutes, 0, 60, 0), std::nullopt);
    EXPECT_EQ(limitProgress(Limit::Megabytes, 4, std::nullopt, 1024 * 1024), 25);
    EXPECT_EQ(limitProgress(Limit::Megabytes, -1, std::nullopt, 1024 * 1024), 0);
    EXPECT_TRUE(limitReached(100, 4));
    EXPECT_FALSE(limitReached(100, 0));
    EXPECT_FALSE(limitReached(99, 4));
}

TEST(RecorderStats, MonitorPanelTexts)
{
    EXPECT_EQ(bytesText(123456), u"123456 bytes");
    EXPECT_EQ(diskCacheText(32000), u"32000 bytes / 64000 bytes");
    EXPECT_EQ(syncStatText(49, 2), u"49 bytes have been discarded in 2 resyncs. ");
    EXPECT_EQ(bufferBarPercent(50, 0), std::nullopt);
    EXPECT_EQ(bufferBarPercent(50, 200), 25);
    EXPECT_EQ(cacheBarPercent(64001), 100);
    EXPECT_EQ(cacheBarPercent(320), 0); // 0.5 and 1.5 round to even
    EXPECT_EQ(cacheBarPercent(960), 2);
}
