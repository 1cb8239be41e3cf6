#include "tests/update/UpdateRig.h"

#include <QPointer>

namespace vorn {
namespace {

const QString kFirstText = texts::kUpdating.arg(0);

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
    struct Row
    {
        BootStep step;
        QStringList texts;
    };
    for (const Row &row :
         {Row{BootStep::Sync, {texts::kUpdateFailed, texts::kDeviceDoesNotRespond}},
          Row{BootStep::Erase, {texts::kEraseFailed}},
          Row{BootStep::Frame, {kFirstText, texts::kUpdateFailed}},
          Row{BootStep::Last, {kFirstText, texts::kUpdateFailed}}}) {
        SCOPED_TRACE(row.texts.join(u' ').toStdString());
        UpdateRig rig(
            with(&DeviceOptions::faults,
                 {{.step = row.step, .kind = FaultKind::Unplug, .frame = 1, .times = 1}}));
        rig.update(250);
        expectEndedAtOnce(rig);
        rig.settle();
        EXPECT_EQ(rig.events, kPulse + row.texts);

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

    rig.onErasing = nullptr;
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
