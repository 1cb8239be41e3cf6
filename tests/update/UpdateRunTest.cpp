// Every way an update can go, over a scripted line.
#include "update/UpdateRun.h"

#include "soak/UpdateCase.h"
#include "tests/support/QtPrinting.h"
#include "tests/support/TestImage.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace vorn {
namespace {

using Kind = UpdateFailureKind;
using Step = ScriptedLine::Step;

// The steps of an update of three data frames, and where it ends when one goes wrong.
struct Row
{
    Step step;
    UpdateStep endsAt;
    qint64 frame = 0;
    std::chrono::milliseconds limit = 5s;
};
const std::vector<Row> kRows{
    {{BootStep::Sync, 0}, UpdateStep::Synchronize},
    {{BootStep::Connect, 0}, UpdateStep::Connect},
    {{BootStep::Version, 0}, UpdateStep::QueryVersion},
    {{BootStep::Download, 0}, UpdateStep::Download},
    {{BootStep::Erase, 0}, UpdateStep::Erase, 0, 30s},
    {{BootStep::Ready, 0}, UpdateStep::Release, 0, 30s},
    {{BootStep::Frame, 1}, UpdateStep::Data, 0},
    {{BootStep::Frame, 2}, UpdateStep::Data, 1},
    {{BootStep::Frame, 3}, UpdateStep::Data, 2},
    {{BootStep::Last, 0}, UpdateStep::Finish},
};

TEST(UpdateRun, EndsAtEachStepAsTheDeviceAnswersIt)
{
    for (const LineFault &fault : lineFaults()) {
        for (const Row &row : kRows) {
            if (!fault.strikes(row.step.first))
                continue;
            const int limit = static_cast<int>(std::chrono::milliseconds(row.limit).count());
            // In time, just in time and just too late; or in pieces.
            std::vector<int> times{0};
            if (fault.time == LineFault::Time::AroundLimit)
                times = {1, limit - 1, limit, limit + 1};
            else if (fault.time == LineFault::Time::AnswerGap)
                times = {0, 6};
            for (const int time : times) {
                UpdateCase made;
                made.faults = {{&fault, row.step, time}};
                EXPECT_EQ(made.run().complaint, QString()) << made.text().toStdString();
            }
        }
    }
}

TEST(UpdateRun, TellsWhatItAwaitedHowLongAndWhetherTheOldFirmwareMayBeGone)
{
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        const Row &row = kRows[i];
        SCOPED_TRACE(static_cast<int>(row.endsAt));
        ScriptedUpdate run(8, imageOf(750));
        // Each answer before takes a second.
        for (std::size_t answered = 0; answered < i; ++answered)
            run.line.faults[kRows[answered].step] = play({"="}, 1s);
        run.line.faults[row.step] = play({});
        const UpdateResult result = run.update();
        const bool hasSentData = row.endsAt >= UpdateStep::Data;
        EXPECT_EQ(result.mayBeErased, row.endsAt >= UpdateStep::Erase);
        EXPECT_EQ(result.imageBytes, row.endsAt >= UpdateStep::QueryVersion ? 750 : 0);
        EXPECT_EQ(result.waited, row.limit);
        EXPECT_EQ(result.elapsed, 20ms + i * 1s + row.limit);
        EXPECT_EQ(result.sending, hasSentData ? (i - 6) * 1s + row.limit : 0s);
        EXPECT_EQ(run.awaited.step, row.endsAt);
        EXPECT_EQ(run.awaited.limit, row.limit);
    }
}

TEST(UpdateRun, PutsImagesOfEveryLengthIntoTheDeviceOnlyErasingModelsAreWaitedFor)
{
    // The last frame of 243 bytes begins with the value of the sync byte.
    for (const qsizetype length : {1, 243, 249, 250, 251, 500, 65'536}) {
        for (const int modelCode : {0, 1, 2, 8, 255}) {
            SCOPED_TRACE(testing::Message() << length << " bytes, model " << modelCode);
            ScriptedUpdate run(modelCode, imageOf(length));
            EXPECT_TRUE(run.update().succeeded());
            EXPECT_TRUE(run.deviceHoldsImage());
            EXPECT_EQ(run.line.violations, QStringList());
            EXPECT_EQ(run.targetVersion, modelCode);
            EXPECT_EQ(run.waitsForErase, modelCode >= 2);
            EXPECT_EQ(run.line.elapsed(), 30ms) << "two pulses, and the boot loader's start";
            EXPECT_TRUE(std::is_sorted(run.percents.begin(), run.percents.end()));
            EXPECT_EQ(run.percents.size(),
                      static_cast<std::size_t>(std::min<qsizetype>(length / 250, 100)));
        }
    }
}

TEST(UpdateRun, AnImageThatCannotBeReadIsFoundBeforeTheDownloadCommand)
{
    ScriptedUpdate run(8, imageOf(750));
    run.failure = {Kind::ImageUnreadable, ENOENT, "gone.bin"};
    const UpdateResult result = run.update();
    EXPECT_EQ(result.failure.kind, Kind::ImageUnreadable);
    EXPECT_EQ(result.failure.code, ENOENT);
    EXPECT_EQ(result.step, UpdateStep::ReadImage);
    EXPECT_EQ(run.line.lastSent.toHex(), "0302fdfc");
    EXPECT_EQ(run.line.rts, (std::vector{true, false}));
}

TEST(UpdateRun, ADeviceIsSentItsImageAsItsFamilyTakesIt)
{
    const std::array families{
        kDeviceFamilies.front(),
        DeviceFamily{.firstModel = 20, .loadAddress = 0x08004000, .imageBytesPerFrame = 100}};
    BootParameters parameters = kVornBoot;
    parameters.families = families;
    for (const auto &[model, header, frames] : {std::tuple(19, "090800180000000190", 2),
                                                {20, "090800400000000190", 5},
                                                {255, "090800400000000190", 5}}) {
        ScriptedUpdate run(model, imageOf(400));
        run.line.faults[{BootStep::Erase, 0}] = play({});
        EXPECT_EQ(run.update(parameters).frames, frames);
        EXPECT_EQ(run.line.lastSent.toHex().left(18), header);
    }
}

TEST(UpdateRun, AQueryTellsTheVersionAndLeavesTheDeviceRunning)
{
    for (const auto &[fault, kind, version] :
         {std::tuple(play({"="}), Kind::None, 8), {play({}), Kind::TimedOut, -1}}) {
        ScriptedUpdate run(8, imageOf(750));
        run.line.faults[{BootStep::Connect, 0}] = fault;
        EXPECT_EQ(queryTargetVersion(run.line, kVornBoot, run).failure.kind, kind);
        EXPECT_EQ(run.targetVersion, version);
        EXPECT_EQ(run.line.lastSent.toHex(), kind == Kind::None ? "0302fdfc" : "0301fefc");
        EXPECT_FALSE(run.line.rts.back());
    }
}

TEST(UpdateRun, WhateverGoesWrongTheReportIsTrue)
{
    const unsigned firstSeed = std::random_device{}();
    int successes = 0;
    constexpr unsigned kUpdates = 5'000;
    for (unsigned i = 0; i < kUpdates && !::testing::Test::HasFailure(); ++i) {
        const UpdateCase made = UpdateCase::random(firstSeed + i);
        const UpdateCase::Outcome outcome = made.run();
        EXPECT_EQ(outcome.complaint, QString()) << made.text().toStdString();
        successes += outcome.ending == Kind::None ? 1 : 0;
    }
    // Neither all nor none: the faults strike, and not always.
    EXPECT_GT(successes, kUpdates / 10);
    EXPECT_LT(successes, kUpdates);
}

} // namespace
} // namespace vorn
