#include "recorder/modshutdown.h"

#include "fakepowercontrol.h"

#include <gtest/gtest.h>

namespace {

struct OsRow
{
    int platformId, major, minor;
    qint32 platformClass, systemCode;
    bool canSuspend;
};

class OsTable : public ::testing::TestWithParam<OsRow>
{
};

TEST_P(OsTable, ClassifiesAndGatesSuspend)
{
    const OsRow row = GetParam();
    const modShutdown::OsInfo info = modShutdown::GetOsInfo({row.platformId, row.major, row.minor});
    EXPECT_EQ(info.PlatformClass, row.platformClass);
    EXPECT_EQ(info.SystemCode, row.systemCode);
    EXPECT_EQ(info.Version, QString::number(row.major) + u'.' + QString::number(row.minor));

    FakePowerControl power;
    power.version = {row.platformId, row.major, row.minor};
    EXPECT_EQ(modShutdown::Suspend(power, true, true, false), row.canSuspend);
    ASSERT_EQ(power.suspendCalls.size(), row.canSuspend ? 1 : 0);
    if (row.canSuspend) {
        EXPECT_TRUE(power.suspendCalls[0].hibernate);
        EXPECT_TRUE(power.suspendCalls[0].force);
        EXPECT_FALSE(power.suspendCalls[0].disableWakeEvents);
    }
}

INSTANTIATE_TEST_SUITE_P(Systems, OsTable,
                         ::testing::Values(OsRow{1, 4, 0, 1, 1, false}, OsRow{1, 4, 10, 1, 2, true},
                                           OsRow{1, 4, 90, 1, 3, true}, OsRow{1, 4, 50, 1, 0, false},
                                           OsRow{2, 4, 0, 2, 4, false}, OsRow{2, 5, 0, 2, 5, true},
                                           OsRow{2, 5, 1, 2, 6, true}, OsRow{2, 10, 0, 2, 6, true},
                                           OsRow{0, 6, 0, 0, 0, false}, OsRow{3, 6, 0, 0, 0, false}));

TEST(ModShutdown, ForcedPowerOffCarriesTheForceFlag)
{
    FakePowerControl power;
    power.accept = false;
    EXPECT_FALSE(modShutdown::ExitWindows(power, modShutdown::ExitPowerOff, true));
    modShutdown::ExitWindows(power, modShutdown::ExitPowerOff, false);
    EXPECT_EQ(power.exitCalls, (QList<quint32>{12, 8}));
}

} // namespace
