#include "recorder/modshutdown.h"

#include "support/fakepowercontrol.h"

#include <gtest/gtest.h>

namespace {

TEST(ModShutdown, ClassifiesTheSystemAndGatesSuspend)
{
    const struct
    {
        int platformId, major, minor;
        qint32 platformClass, systemCode;
        bool canSuspend;
    } rows[] = {{1, 4, 0, 1, 1, false},  {1, 4, 10, 1, 2, true}, {1, 4, 90, 1, 3, true},
                {1, 4, 50, 1, 0, false}, {2, 4, 0, 2, 4, false}, {2, 5, 0, 2, 5, true},
                {2, 5, 1, 2, 6, true},   {2, 10, 0, 2, 6, true}, {0, 6, 0, 0, 0, false},
                {3, 6, 0, 0, 0, false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::Message() << row.platformId << ' ' << row.major << '.' << row.minor);
        const modShutdown::OsInfo info = modShutdown::GetOsInfo({row.platformId, row.major, row.minor});
        EXPECT_EQ(info.PlatformClass, row.platformClass);
        EXPECT_EQ(info.SystemCode, row.systemCode);
        EXPECT_EQ(info.Version, QString::number(row.major) + u'.' + QString::number(row.minor));
        FakePowerControl power;
        power.version = {row.platformId, row.major, row.minor};
        EXPECT_EQ(modShutdown::Suspend(power, true, true, false), row.canSuspend);
        ASSERT_EQ(power.suspendCalls.size(), row.canSuspend ? 1 : 0);
        if (row.canSuspend) {
            const FakePowerControl::SuspendCall call = power.suspendCalls[0];
            EXPECT_TRUE(call.hibernate && call.force && !call.disableWakeEvents);
        }
    }
}

TEST(ModShutdown, ForcedPowerOffCarriesTheForceFlag)
{
    FakePowerControl power;
    power.accept = false;
    EXPECT_FALSE(modShutdown::ExitWindows(power, modShutdown::ExitPowerOff, true));
    modShutdown::ExitWindows(power, modShutdown::ExitPowerOff, false);
    EXPECT_EQ(power.exitCalls, (QList<quint32>{12, 8}));
}

} // namespace
