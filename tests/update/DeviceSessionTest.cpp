// Sessions with simulated devices on real terminals.
#include "platform/MainQueue.h"
#include "serial/ORSSerialPortManager.h"
#include "tests/update/SessionRig.h"
#include "update/Frames.h"
#include "update/PortLine.h"

#include <QPointer>
#include <QTimer>

#include <thread>

namespace vorn {
namespace {

using Kind = UpdateFailureKind;

TEST(DeviceSession, OpensAtTheFamilysSpeedAndAsksForTheVersion)
{
    const auto begin = std::chrono::steady_clock::now();
    SessionRig rig({.modelCode = 200});
    EXPECT_EQ(rig.session->port()->baudRate(), 2'000'000U);
    EXPECT_GE(rig.session->lastHeard(), begin);
    EXPECT_TRUE(rig.session->transcript()->text().contains("< AF 00 00 C8\n"));
    EXPECT_EQ(rig.targetVersion, 200);
    EXPECT_EQ(rig.device.report().exchanges, 1);
    EXPECT_FALSE(rig.session->port()->RTS());
}

TEST(DeviceSession, UpdatesSeveralDevicesSideBySideWhileTheMainThreadIsBusy)
{
    std::vector<std::unique_ptr<SessionRig>> rigs;
    for (const int modelCode : {1, 8, 1, 8, 1, 8, 1, 8, 1, 8})
        rigs.push_back(std::make_unique<SessionRig>(DeviceOptions{.modelCode = modelCode}));
    for (const auto &rig : rigs)
        rig->update(250);
    for (const auto &rig : rigs) {
        EXPECT_TRUE(rig->device.waitForExchanges(2, 10s)) << "no event loop runs meanwhile";
        rig->session->startUpdate(rig->imagePath); // does nothing more
    }
    QTimer busy;
    QObject::connect(&busy, &QTimer::timeout, [] { std::this_thread::sleep_for(200ms); });
    busy.start(0);
    for (const auto &rig : rigs) {
        rig->expectUpdated();
        EXPECT_EQ(rig->device.report().exchanges, 2);
    }
}

TEST(PortLine, DropsWhatArrivedBeforeItSendsAndSendsNothingOnceAbandoned)
{
    SessionRig rig;
    const auto buffer = std::make_shared<ReceiveBuffer>();
    PortLine line(rig.session->port(), buffer);
    const QByteArray sync(1, static_cast<char>(SyncByte));
    buffer->startReceiving();
    buffer->receive("\xaf");
    line.send(sync);
    QByteArray chunk;
    EXPECT_EQ(line.waitForChunk(line.now(), chunk), LineEvent::Silence);
    EXPECT_TRUE(rig.device.waitForExchanges(2, 10s));
    buffer->abandon();
    line.send(sync);
    runEventLoopFor(50ms);
    EXPECT_EQ(rig.device.report().exchanges, 2);
    EXPECT_EQ(line.waitForChunk(line.now() + 10s, chunk), LineEvent::Abandoned);
}

TEST(PortLine, ADeviceThatNeverFallsSilentDoesNotProlongAWait)
{
    SessionRig rig;
    const auto buffer = std::make_shared<ReceiveBuffer>();
    PortLine line(rig.session->port(), buffer);
    const auto deadline = line.now();
    QByteArray chunk;
    buffer->startReceiving();
    for (const char *late : {"x", "y"})
        buffer->receive(late);
    for (const auto event : {LineEvent::Chunk, LineEvent::Chunk, LineEvent::Silence}) {
        EXPECT_EQ(line.waitForChunk(deadline, chunk), event);
        buffer->receive("later");
    }
    // What came late is for the next wait.
    EXPECT_EQ(line.waitForChunk(line.now() + 10s, chunk), LineEvent::Chunk);
    EXPECT_EQ(chunk, "later");
}

TEST(Transcript, KeepsOnlyTheNumberOfTheBytesBeyondItsMemory)
{
    Transcript transcript;
    const Transcript::Time begin{1h};
    transcript.add(Transcript::Kind::Sent, begin, QByteArray(Transcript::kKeptBytes - 1, 'x'));
    transcript.add(Transcript::Kind::Sent, begin + 1500ms, "ab");
    transcript.add(Transcript::Kind::Received, begin + 1500ms + 1us, "\xaf");
    EXPECT_TRUE(transcript.text().endsWith(" 78\n1.500000 > (2 bytes)\n1.500001 < AF\n"));
}

TEST(DeviceSession, CountsAnswersThatCameInTimeHoweverLateTheyAreDelivered)
{
    BootParameters parameters = patientParameters();
    parameters.answerLimit = 200ms;
    parameters.answerGap = 20ms;
    SessionRig rig({.connectPieces = {1, 3}}, parameters);
    rig.targetVersion = -1;
    // For longer than the update waits.
    QTimer busy;
    QObject::connect(&busy, &QTimer::timeout, [] { std::this_thread::sleep_for(400ms); });
    busy.start(0);
    rig.update(300);
    rig.expectUpdated();
    EXPECT_EQ(rig.targetVersion, 8);
}

TEST(DeviceSession, NeedsNoProcessorTimeWhileTheDeviceErases)
{
    SessionRig rig({.eraseTime = 1s});
    std::vector<UpdateStep> steps;
    rig.onProgress = [&](const UpdateProgress &progress) { steps.push_back(progress.step); };
    rig.update(250);
    ASSERT_TRUE(eventually([&] { return !steps.empty() && steps.back() == UpdateStep::Erase; }));
    const auto before = processorTime();
    EXPECT_TRUE(eventually([&] { return steps.back() == UpdateStep::Data; }));
    EXPECT_LT(processorTime() - before, 300ms) << "of one second; polling would take all of it";
    rig.expectUpdated();
}

TEST(DeviceSession, ClosingIsToldWhenItIsTrueEndsWhatRunsAndMayBeFollowedByOpening)
{
    SessionRig rig({.eraseTime = 300ms});
    rig.onProgress = [&](const UpdateProgress &progress) {
        if (progress.step == UpdateStep::Erase)
            rig.session->close();
    };
    rig.onClose = [&] { EXPECT_TRUE(rig.session->open()); };
    rig.update(250);
    EXPECT_EQ(rig.result().failure.kind, Kind::PortClosed);
    EXPECT_EQ(rig.result().step, UpdateStep::Erase);
    EXPECT_EQ(rig.closings, std::vector{true});
    EXPECT_TRUE(eventually([&] { return rig.queries == 2; }));
    EXPECT_TRUE(rig.session->transcript()->text().contains("> 09 08 00 18"))
        << "the query's is not";

    rig.onClose = [] {};
    rig.session->close();
    ASSERT_TRUE(eventually([&] { return rig.closings.size() == 2; }));
    EXPECT_FALSE(rig.session->port()->isOpen());
    rig.update(250); // on the closed port
    EXPECT_EQ(rig.result(2).failure.kind, Kind::PortClosed);
}

TEST(DeviceSession, OneMayBeDestroyedWhenTheErrorOfItsOpeningIsTold)
{
    SessionRig rig;
    rig.session.reset();
    SerialDevice record;
    record.calloutDevice = "/dev/null";
    rig.session = std::make_unique<DeviceSession>(
        ORSSerialPort::serialPortWithDevice(std::make_shared<SerialDevice>(record)), rig);
    rig.onError = [&] { rig.session.reset(); };
    EXPECT_FALSE(rig.session->open());
    EXPECT_FALSE(rig.session);
}

TEST(DeviceSession, OneThatEndsTellsOfWhatRanAndLeavesThePortToItsSuccessor)
{
    SessionRig rig;
    rig.device.setFaults(
        {{.step = BootStep::Frame, .kind = FaultKind::Silence, .frame = 1, .times = 1}});
    rig.onProgress = [&](const UpdateProgress &progress) {
        if (progress.step == UpdateStep::Data)
            QTimer::singleShot(0, [&] { rig.session->end(); });
    };
    rig.update(500);
    const UpdateResult result = rig.result();
    EXPECT_EQ(result.failure.kind, Kind::PortClosed);
    EXPECT_EQ(result.step, UpdateStep::Data);
    EXPECT_EQ(result.frames, 3);

    rig.onProgress = [](const auto &) {};
    const ORSSerialPortPtr port = rig.session->port();
    ASSERT_TRUE(eventually([&] { return !port->isOpen(); }));
    const auto first = std::exchange(rig.session, std::make_unique<DeviceSession>(port, rig));
    ASSERT_TRUE(rig.session->open());
    first->end();
    rig.update(500);
    rig.expectUpdated(2);
}

TEST(DeviceSession, AnUpdateTakesTheLineFromAQueryThatStillWaits)
{
    BootParameters parameters = patientParameters();
    parameters.resetPulse = parameters.bootLoaderStart = 20ms;
    for (const auto pause : {0ms, 10ms, 30ms, 40ms}) {
        SessionRig rig({}, parameters);
        rig.session->close();
        ASSERT_TRUE(eventually([&] { return !rig.closings.empty(); }));
        ASSERT_TRUE(rig.session->open());
        runEventLoopFor(pause);
        rig.update(600);
        rig.expectUpdated();
        EXPECT_EQ(rig.queries, 1) << "an abandoned query says nothing";
    }
}

TEST(DeviceSession, ABusyMainThreadDoesNotMakeTheQuerysLastAnswerTheUpdatesFirst)
{
    SessionRig rig({.answerDelay = 40ms});
    rig.targetVersion = -1;
    runEventLoopFor(100ms);
    rig.update(600);
    // It was read during the reset; the sync byte is sent before it is delivered.
    MainQueue::instance().post(
        [&] { rig.session->serialPortDidReceiveData(*rig.session->port(), "\xaf"); });
    std::this_thread::sleep_for(30ms);
    rig.expectUpdated();
    EXPECT_EQ(rig.targetVersion, 8);
}

TEST(DeviceSession, OneThatIsDestroyedLeavesWithoutAWordAndTheLineToTheNext)
{
    SessionRig rig({.eraseTime = 300ms});
    const QPointer<ORSSerialPort> port = rig.session->port().get();
    rig.onProgress = [&](const UpdateProgress &progress) {
        if (progress.step == UpdateStep::Erase)
            QTimer::singleShot(0, [&] { rig.session.reset(); });
    };
    rig.update(250);
    ASSERT_TRUE(eventually([&] { return !rig.session; }));
    EXPECT_TRUE(eventually([&] { return port.isNull(); })) << "nobody needs the port any more";
    EXPECT_TRUE(rig.results.empty() && rig.closings.empty());
    EXPECT_EQ(rig.device.report().downloadFrames, 0) << "nothing more was sent";

    rig.onProgress = [](const auto &) {};
    rig.open();
    rig.update(500);
    rig.expectUpdated();
}

} // namespace
} // namespace vorn
