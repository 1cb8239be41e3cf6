#include "tests/update/UpdateRig.h"

#include <QTimer>

#include <thread>

namespace vorn {
namespace {

using Outcome = UpdateResult::Outcome;
using Rigs = std::vector<std::unique_ptr<UpdateRig>>;

// What the user sees of a whole update, a text that stays counted once.
QStringList eventsOfUpdate(qsizetype length)
{
    QStringList events{kRtsHigh, kRtsLow};
    const qsizetype frames = length / 250;
    for (qsizetype i = 0; i < frames; ++i) {
        const auto share = static_cast<float>(i) / static_cast<float>(frames);
        const QString text = QString::asprintf("Prompt:%d%%progress,updating firmware",
                                               static_cast<int>(share * 100.0F));
        if (events.back() != text)
            events.append(text);
    }
    return events << kRtsHigh << "Prompt:100% progress,successfully update" << kRtsLow;
}

void expectUpdated(UpdateRig &rig, const QByteArray &image, std::size_t run = 1)
{
    const UpdateResult result = rig.result(run);
    EXPECT_TRUE(result.succeeded()) << qPrintable(result.description);
    EXPECT_EQ(result.description, QString());
    const DeviceReport report = rig.device.report();
    EXPECT_TRUE(report.image == image);
    EXPECT_EQ(report.errors, QStringList());
    EXPECT_EQ(rig.progress.back(), 100);
}

TEST(Update, PutsTheImageIntoTheDeviceByteForByte)
{
    Rigs rigs;
    std::vector<qsizetype> lengths;
    // The last frame of 243 bytes begins with the value of the sync byte.
    for (const qsizetype length : {1, 243, 249, 250, 251, 500, 65'536}) {
        for (const int modelCode : {1, 2, 8}) {
            rigs.push_back(std::make_unique<UpdateRig>(with(&DeviceOptions::modelCode, modelCode)));
            rigs.back()->update(sampleImage(length));
            lengths.push_back(length);
        }
    }
    for (std::size_t i = 0; i < rigs.size(); ++i) {
        UpdateRig &rig = *rigs[i];
        const int modelCode = rig.device.report().modelCode;
        SCOPED_TRACE(testing::Message() << lengths[i] << " bytes to model " << modelCode);
        expectUpdated(rig, sampleImage(lengths[i]));
        EXPECT_EQ(rig.updater->targetVersion(), modelCode);
        EXPECT_EQ(rig.erasings, modelCode >= 2 ? 1 : 0);
        EXPECT_TRUE(eventually([&] { return rig.events.back() == kRtsLow; }));
        EXPECT_EQ(rig.events, eventsOfUpdate(lengths[i]));
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
        rigs.back()->update(sampleImage(600));
    }
    for (std::size_t i = 0; i < rigs.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "shape " << i << ": " << shapes[i].first);
        expectUpdated(*rigs[i], sampleImage(600));
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
        const QByteArray image = sampleImage(250 + static_cast<qsizetype>(run));
        for (const auto &rig : rigs)
            rig->update(image);
        for (const auto &rig : rigs)
            expectUpdated(*rig, image, run);
    }
    busy.stop();
}

TEST(Update, TheSyncByteDoesNotWaitForTheMainThread)
{
    UpdateRig rig;
    rig.update(sampleImage(1));
    EXPECT_TRUE(rig.device.waitForExchanges(1, 10s)) << "no event loop runs meanwhile";
    expectUpdated(rig, sampleImage(1));
}

TEST(Update, CountsAnswersThatCameInTimeHoweverLateTheyAreDelivered)
{
    UpdateTimings timings = patientTimings();
    timings.answer = 500ms;
    timings.answerGap = 20ms;
    UpdateRig rig(with(&DeviceOptions::connectPieces, {1, 3}), timings);
    // For longer than the updater waits, right behind the answers to the sync byte and to the
    // connect command, whose other piece is under way then.
    rig.onChunk = [&] {
        if (rig.chunks.size() <= 2)
            QTimer::singleShot(0, [] { std::this_thread::sleep_for(1s); });
    };
    rig.update(sampleImage(300));
    expectUpdated(rig, sampleImage(300));
    EXPECT_EQ(rig.updater->targetVersion(), 8);
}

TEST(Update, NeedsNoProcessorTimeWhileTheDeviceErases)
{
    UpdateRig rig(with(&DeviceOptions::eraseTime, 1s));
    std::chrono::nanoseconds before{};
    rig.onErasing = [&] { before = processorTime(); };
    std::chrono::nanoseconds used{};
    rig.onText = [&](const QString &text) {
        if (text.startsWith("Prompt:0%"))
            used = processorTime() - before;
    };
    rig.update(sampleImage(250));
    expectUpdated(rig, sampleImage(250));
    EXPECT_LT(used, 300ms) << "of one second; polling would take all of it";
}

} // namespace
} // namespace vorn
