#include "tests/update/UpdateRig.h"

namespace vorn {
namespace {

const QStringList kPulse{kRtsHigh, kRtsLow};

UpdateTimings quickTimings()
{
    UpdateTimings timings = patientTimings();
    timings.answer = 1s;
    return timings;
}

TEST(VersionQuery, StoresTheDevicesModelCodeAndASilentDeviceLeavesIt)
{
    UpdateRig rig(with(&DeviceOptions::modelCode, 200), quickTimings());
    EXPECT_EQ(rig.updater->targetVersion(), -1);
    rig.updater->getTargetVersion(rig.port);
    ASSERT_TRUE(eventually([&] { return rig.endedQueries == 1; }));
    EXPECT_EQ(rig.updater->targetVersion(), 200);
    rig.settle();
    EXPECT_EQ(rig.events, kPulse);

    for (const FaultKind kind : {FaultKind::Refuse, FaultKind::Silence}) {
        rig.events.clear();
        const int endedBefore = rig.endedQueries;
        rig.device.setFaults({{.step = BootStep::Connect, .kind = kind}});
        rig.updater->getTargetVersion(rig.port);
        ASSERT_TRUE(eventually([&] { return rig.endedQueries > endedBefore; }));
        EXPECT_EQ(rig.updater->targetVersion(), 200);
        const QStringList text{QStringLiteral("Prompt:Firmware update failed,please try again")};
        EXPECT_EQ(rig.events, kind == FaultKind::Refuse ? kPulse : kPulse + text);
    }
    EXPECT_EQ(rig.device.report().errors, QStringList());
}

TEST(VersionQuery, ARunTakesOverFromAQueryThatWaits)
{
    UpdateRig rig(with(&DeviceOptions::faults, {{.step = BootStep::Sync, .times = 1}}));
    rig.updater->getTargetVersion(rig.port);
    ASSERT_TRUE(eventually([&] { return rig.device.report().exchanges == 1; }));
    rig.events.clear();
    rig.update(sampleImage(1));
    EXPECT_TRUE(rig.result().succeeded());
    EXPECT_TRUE(eventually([&] { return rig.events.size() == 5; }));
    EXPECT_EQ(rig.events, kPulse + QStringList({kRtsHigh, texts::kUpdated, kRtsLow}));
    EXPECT_EQ(rig.endedQueries, 0);
    EXPECT_EQ(rig.device.report().image, sampleImage(1));
}

TEST(VersionQuery, ARunThatFollowsAtOnceHasTheLineToItself)
{
    UpdateTimings timings = patientTimings();
    timings.resetPulse = timings.bootLoaderStart = 20ms;
    for (const auto pause : {0ms, 10ms, 30ms, 40ms}) {
        UpdateRig rig({}, timings);
        rig.updater->getTargetVersion(rig.port);
        runEventLoopFor(pause);
        rig.update(sampleImage(600));
        EXPECT_TRUE(rig.result().succeeded());
        const DeviceReport report = rig.device.report();
        EXPECT_EQ(report.errors, QStringList());
        EXPECT_EQ(report.image, sampleImage(600));
        EXPECT_EQ(rig.endedQueries, 0);
    }
}

} // namespace
} // namespace vorn
