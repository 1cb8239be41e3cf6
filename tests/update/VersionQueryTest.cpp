#include "tests/update/UpdateRig.h"

namespace vorn {
namespace {

TEST(VersionQuery, StoresTheDevicesModelCodeAndASilentDeviceLeavesIt)
{
    UpdateTimings timings = patientTimings();
    timings.answer = 1s;
    UpdateRig rig(with(&DeviceOptions::modelCode, 200), timings);
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
        const QStringList text{"Prompt:Firmware update failed,please try again"};
        EXPECT_EQ(rig.events, kind == FaultKind::Refuse ? kPulse : kPulse + text);
    }
    EXPECT_EQ(rig.device.report().errors, QStringList());
}

TEST(VersionQuery, ARunThatFollowsAtOnceHasTheLineToItself)
{
    UpdateTimings timings = patientTimings();
    timings.resetPulse = timings.bootLoaderStart = 20ms;
    for (const auto pause : {0ms, 10ms, 30ms, 40ms}) {
        UpdateRig rig({}, timings);
        rig.updater->getTargetVersion(rig.port);
        runEventLoopFor(pause);
        rig.update(600);
        rig.expectUpdated();
        EXPECT_EQ(rig.endedQueries, 0);
    }
}

} // namespace
} // namespace vorn
