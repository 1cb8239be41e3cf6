#include "tests/update/UpdateRig.h"

#include <QTimer>

#include <thread>

namespace vorn {
namespace {

using Rigs = std::vector<std::unique_ptr<UpdateRig>>;

// What the user sees of a whole update, a text that stays counted once.
QStringList eventsOfUpdate(qsizetype length)
{
    QStringList events = kPulse;
    const qsizetype frames = length / 250;
    for (qsizetype i = 0; i < frames; ++i)
        events << QString("Prompt:%1%progress,updating firmware").arg(100 * i / frames);
    events.removeDuplicates();
    return events << kRtsHigh << "Prompt:100% progress,successfully update" << kRtsLow;
}

TEST(Update, PutsTheImageIntoTheDeviceByteForByte)
{
    Rigs rigs;
    // The last frame of 243 bytes begins with the value of the sync byte.
    for (const qsizetype length : {1, 243, 249, 250, 251, 500, 65'536}) {
        for (const int modelCode : {1, 2, 8}) {
            rigs.push_back(std::make_unique<UpdateRig>(with(&DeviceOptions::modelCode, modelCode)));
            rigs.back()->update(length);
        }
    }
    for (const auto &rig : rigs) {
        const int modelCode = rig->device.report().modelCode;
        SCOPED_TRACE(testing::Message() << rig->image.size() << " bytes to model " << modelCode);
        rig->expectUpdated();
        EXPECT_EQ(rig->updater->targetVersion(), modelCode);
        EXPECT_EQ(rig->erasings, modelCode >= 2 ? 1 : 0);
        EXPECT_TRUE(eventually([&] { return rig->events.back() == kRtsLow; }));
        EXPECT_EQ(rig->events, eventsOfUpdate(rig->image.size()));
    }
}

TEST(Update, UnderstandsAnswersInEveryShape)
{
    std::vector<std::pair<const char *, DeviceOptions>> shapes;
    for (const std::vector<int> &pieces : {std::vector{1, 3}, {3, 1}, {2, 2}, {1, 1, 1, 1}})
        shapes.push_back({"connect in pieces", with(&DeviceOptions::connectPieces, pieces)});
    shapes.push_back({"one chunk around the erase", with(&DeviceOptions::joinEraseAnswers, true)});
    const auto addFault = [&](const char *name, const Fault &fault) {
        shapes.push_back({name, with(&DeviceOptions::faults, {fault})});
    };
    addFault("two chunks around the erase",
             {.step = BootStep::Ready, .kind = FaultKind::Late, .delay = 30ms});
    for (const BootStep step :
         {BootStep::Sync, BootStep::Connect, BootStep::Version, BootStep::Download, BootStep::Erase,
          BootStep::Ready, BootStep::Frame, BootStep::Last}) {
        addFault("noise before", {.step = step, .kind = FaultKind::Noise, .frame = 1});
        // Two answers in the chunk that ends the erase are two answers.
        if (step != BootStep::Erase)
            addFault("twice", {.step = step, .kind = FaultKind::Duplicate, .frame = 1});
    }
    Rigs rigs;
    for (const auto &[name, options] : shapes) {
        rigs.push_back(std::make_unique<UpdateRig>(options));
        rigs.back()->update(600);
    }
    for (std::size_t i = 0; i < rigs.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "shape " << i << ": " << shapes[i].first);
        rigs[i]->expectUpdated();
        EXPECT_EQ(rigs[i]->updater->targetVersion(), 8);
    }
}

TEST(Update, SucceedsFiftyTimesOutOfFiftyWhileTheMainThreadIsBusy)
{
    constexpr std::size_t kDevices = 10;
    constexpr std::size_t kRunsEach = 5;
    QTimer busy;
    QObject::connect(&busy, &QTimer::timeout, [] { std::this_thread::sleep_for(200ms); });
    Rigs rigs;
    for (std::size_t i = 0; i < kDevices; ++i)
        rigs.push_back(std::make_unique<UpdateRig>(with(&DeviceOptions::modelCode, i % 2 ? 1 : 8)));
    busy.start(0);
    for (std::size_t run = 1; run <= kRunsEach; ++run) {
        for (const auto &rig : rigs)
            rig->update(250 + static_cast<qsizetype>(run));
        for (const auto &rig : rigs)
            rig->expectUpdated(run);
    }
    busy.stop();
}

TEST(Update, TheSyncByteDoesNotWaitForTheMainThread)
{
    UpdateRig rig;
    rig.update(1);
    EXPECT_TRUE(rig.device.waitForExchanges(1, 10s)) << "no event loop runs meanwhile";
    rig.expectUpdated();
}

TEST(Update, CountsAnswersThatCameInTimeHoweverLateTheyAreDelivered)
{
    UpdateTimings timings = patientTimings();
    timings.answer = 500ms;
    timings.answerGap = 20ms;
    UpdateRig rig(with(&DeviceOptions::connectPieces, {1, 3}), timings);
    // For longer than the updater waits, right behind the answers to the sync byte and to the
    // connect command, whose other piece is under way then.
    rig.onChunk = [chunks = 0]() mutable {
        if (++chunks <= 2)
            QTimer::singleShot(0, [] { std::this_thread::sleep_for(1s); });
    };
    rig.update(300);
    rig.expectUpdated();
    EXPECT_EQ(rig.updater->targetVersion(), 8);
}

TEST(Update, NeedsNoProcessorTimeWhileTheDeviceErases)
{
    UpdateRig rig(with(&DeviceOptions::eraseTime, 1s));
    rig.update(250);
    EXPECT_TRUE(eventually([&] { return rig.erasings == 1; }));
    const auto before = processorTime();
    EXPECT_TRUE(eventually([&] { return !rig.progress.empty(); }));
    EXPECT_LT(processorTime() - before, 300ms) << "of one second; polling would take all of it";
    rig.expectUpdated();
}

} // namespace
} // namespace vorn
