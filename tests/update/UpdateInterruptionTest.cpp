#include "tests/update/UpdateRig.h"

#include <QPointer>

namespace vorn {
namespace {

void expectEndedAtOnce(UpdateRig &rig)
{
    // A run that waits for its time-out needs 20 seconds.
    EXPECT_TRUE(eventually([&] { return !rig.results.empty(); }, 10s));
    const UpdateResult end = rig.result();
    EXPECT_EQ(end.outcome, UpdateResult::Outcome::PortClosed) << qPrintable(end.description);
}

void expectNextRunSucceeds(UpdateRig &rig)
{
    rig.update(1000);
    rig.expectUpdated(rig.results.size() + 1);
    const QStringList end{kRtsHigh, texts::kUpdated, kRtsLow};
    EXPECT_TRUE(eventually([&] { return rig.events.last(3) == end; }));
}

TEST(UpdateInterruption, UnpluggingEndsTheRunAtOnceWithItsTexts)
{
    const QStringList duringData{texts::kUpdating.arg(0), texts::kUpdateFailed};
    const std::vector<std::pair<BootStep, QStringList>> rows{
        {BootStep::Sync, {texts::kUpdateFailed, texts::kDeviceDoesNotRespond}},
        {BootStep::Erase, {texts::kEraseFailed}},
        {BootStep::Frame, duringData},
        {BootStep::Last, duringData}};
    for (const auto &[step, shown] : rows) {
        SCOPED_TRACE(static_cast<int>(step));
        UpdateRig rig(with(&DeviceOptions::faults,
                           {{.step = step, .kind = FaultKind::Unplug, .frame = 1, .times = 1}}));
        rig.update(250);
        expectEndedAtOnce(rig);
        rig.settle();
        EXPECT_EQ(rig.events, kPulse + shown);

        QString problem;
        ASSERT_TRUE(rig.device.replug(&problem)) << qPrintable(problem);
        rig.openPort();
        expectNextRunSucceeds(rig);
    }
}

TEST(UpdateInterruption, ARunOnAPortThatHasClosedAlreadyEndsAtOnce)
{
    UpdateRig rig;
    rig.closePort();
    rig.update(1);
    expectEndedAtOnce(rig);
}

TEST(UpdateInterruption, AnUpdaterThatIsDestroyedLeavesWithoutAWord)
{
    UpdateRig rig(with(&DeviceOptions::eraseTime, 300ms));
    rig.onErasing = [&] { rig.updater.reset(); };
    rig.update(250);
    EXPECT_TRUE(eventually([&] { return !rig.updater; }));
    runEventLoopFor(500ms);
    EXPECT_EQ(rig.events, kPulse);
    EXPECT_TRUE(rig.results.empty());
    EXPECT_EQ(rig.device.report().downloadFrames, 0) << "nothing more was sent";

    rig.onErasing = [] {};
    rig.updater = std::make_unique<Updater>(&rig, patientTimings());
    expectNextRunSucceeds(rig);
}

TEST(UpdateInterruption, AnUpdaterThatIsDestroyedDuringTheResetLetsTheDeviceGo)
{
    UpdateRig rig;
    rig.update(250);
    rig.updater.reset();
    EXPECT_TRUE(eventually([&] { return rig.events == kPulse; }));
    rig.settle();
    EXPECT_EQ(rig.device.report().exchanges, 0);
}

TEST(UpdateInterruption, ARunKeepsThePortThatItsOwnerReleases)
{
    UpdateRig rig(with(&DeviceOptions::eraseTime, 50ms));
    const QPointer<ORSSerialPort> port = rig.port.get();
    rig.onErasing = [&] { rig.port.reset(); };
    rig.update(250);
    EXPECT_TRUE(rig.result().succeeded());
    EXPECT_TRUE(eventually([&] { return port.isNull(); })) << "nobody needs it any more";
}

} // namespace
} // namespace vorn
