// Every way an update can go, over a scripted line.
#include "update/UpdateRun.h"

#include "tests/support/QtPrinting.h"
#include "tests/support/TestImage.h"
#include "tests/update/ScriptedLine.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

namespace vorn {
namespace {

using Kind = UpdateFailureKind;
using Step = ScriptedLine::Step;
using Fault = ScriptedLine::Fault;

struct ScriptedUpdate final : UpdateObserver
{
    explicit ScriptedUpdate(int modelCode, qsizetype length = 750)
        : line(modelCode), image(imageOf(length))
    {
    }

    UpdateResult update(const BootParameters &parameters = kVornBoot)
    {
        result = runUpdate(
            line,
            [this](qint32) {
                return FirmwareImage{image, failure};
            },
            parameters, *this);
        return result;
    }
    bool deviceHoldsImage() const { return line.isComplete && line.image == image; }

    void targetVersionDidArrive(qint32 version) override { targetVersion = version; }
    void updateDidProgress(const UpdateProgress &progress) override
    {
        awaited = progress;
        waitsForErase = waitsForErase || progress.step == UpdateStep::Erase;
        if (progress.step == UpdateStep::Data)
            percents.push_back(progress.percent);
    }
    void updateDidEnd(const UpdateResult &) override { ++ends; }

    ScriptedLine line;
    QByteArray image;
    UpdateFailure failure;
    UpdateResult result;
    qint32 targetVersion = -1;
    std::vector<int> percents;
    UpdateProgress awaited;
    bool waitsForErase = false;
    int ends = 0;
};

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

// The device says these chunks in place of its answer, for which "=" stands, and "/" for its single
// bytes; without the answer nothing follows.
Fault play(const QByteArrayList &chunks, std::chrono::milliseconds after = 0ms)
{
    return [=](ScriptedLine &line, const QByteArray &answer) {
        bool goesOn = false;
        for (QByteArray chunk : chunks) {
            goesOn = goesOn || chunk.contains('=') || chunk == "/";
            for (const char byte : chunk == "/" ? answer : QByteArray())
                line.answer(QByteArray(1, byte));
            if (chunk != "/")
                line.answer(chunk.replace('=', answer), after);
        }
        return goesOn;
    };
}

struct Variant
{
    const char *name;
    Kind ending;
    QByteArrayList chunks;
    std::optional<std::chrono::milliseconds> afterLimit = {}; // at once when there is none
    LineEvent event = LineEvent::Chunk;

    Fault at(const Row &row) const
    {
        if (event != LineEvent::Chunk)
            return [event = event](ScriptedLine &line, const QByteArray &) {
                line.happens(event);
                return false;
            };
        return play(chunks, afterLimit ? row.limit + *afterLimit : 0ms);
    }
};
const QByteArray kNoise = "\x01\xaf\xfc";
const std::vector<Variant> kVariants{
    {"silence", Kind::TimedOut, {}},
    {"a refusal", Kind::Refused, {"\xfc"}},
    {"garbage", Kind::TimedOut, {kNoise, "\x02"}},
    {"garbage, then the answer", Kind::None, {kNoise, "="}},
    {"the answer just in time", Kind::None, {"="}, -1ms},
    {"the answer just too late", Kind::TimedOut, {"="}, 1ms},
    {"the answer byte by byte", Kind::None, {"/"}},
    {"noise in the chunk behind the answer", Kind::None, {"=\xfc"}},
    {"the answer twice in two chunks", Kind::None, {"=", "="}},
    {"an unplugged device", Kind::PortClosed, {}, {}, LineEvent::Gone},
    {"an abandoned update", Kind::Abandoned, {}, {}, LineEvent::Abandoned},
};

TEST(UpdateRun, EndsAtEachStepAsTheDeviceAnswersIt)
{
    for (const Variant &variant : kVariants) {
        for (const Row &row : kRows) {
            SCOPED_TRACE(testing::Message()
                         << variant.name << " at step " << static_cast<int>(row.endsAt)
                         << ", frame " << row.frame);
            const QByteArray name(variant.name);
            // Around the erase, two answers follow each other without a frame between them: these
            // two are told apart by nothing.
            if (row.endsAt == UpdateStep::Erase &&
                (name.contains("twice") || name.contains("noise")))
                continue;
            ScriptedUpdate run(8);
            run.line.faults[row.step] = variant.at(row);
            const UpdateResult result = run.update();
            EXPECT_EQ(result.failure.kind, variant.ending);
            EXPECT_EQ(run.deviceHoldsImage(),
                      variant.ending == Kind::None || row.step.first == BootStep::Last);
            EXPECT_EQ(run.line.violations, QStringList());
            EXPECT_EQ(run.ends, variant.ending == Kind::Abandoned ? 0 : 1);
            std::vector<bool> rts{true, false};
            if (variant.ending == Kind::None) {
                rts.insert(rts.end(), {true, false});
                EXPECT_EQ(run.percents, (std::vector{0, 33, 66}));
            } else {
                EXPECT_EQ(result.step, row.endsAt);
                EXPECT_EQ(result.frame, row.frame);
            }
            if (row.step.first == BootStep::Last &&
                (variant.ending == Kind::TimedOut || variant.ending == Kind::PortClosed))
                rts.push_back(false);
            EXPECT_EQ(run.line.rts, rts);
        }
    }
}

TEST(UpdateRun, TellsWhatItAwaitedHowLongAndWhetherTheOldFirmwareMayBeGone)
{
    for (std::size_t i = 0; i < kRows.size(); ++i) {
        const Row &row = kRows[i];
        SCOPED_TRACE(static_cast<int>(row.endsAt));
        ScriptedUpdate run(8);
        // Each answer before takes a second; the release comes with the end of the erase.
        for (std::size_t answered = 0; answered < i; ++answered)
            run.line.faults[kRows[answered].step] = play({"="}, 1s);
        run.line.faults[row.step] = play({});
        const UpdateResult result = run.update();
        const bool hasSentData = row.endsAt >= UpdateStep::Data;
        EXPECT_EQ(result.mayBeErased, row.endsAt >= UpdateStep::Erase);
        EXPECT_EQ(result.imageBytes, row.endsAt >= UpdateStep::QueryVersion ? 750 : 0);
        EXPECT_EQ(result.waited, row.limit);
        EXPECT_EQ(result.elapsed, 20ms + (hasSentData ? i - 1 : i) * 1s + row.limit);
        EXPECT_EQ(result.sending, hasSentData ? (i - 6) * 1s + row.limit : 0s);
        EXPECT_EQ(run.awaited.step, row.endsAt);
        EXPECT_EQ(run.awaited.limit, row.limit);
    }
}

TEST(UpdateRun, TwoAnswersInTheChunkThatEndsTheEraseAreTwo)
{
    for (const auto &[both, ending] :
         {std::pair("\xaf\xaf", Kind::None), {"\xaf\xfc", Kind::Refused}}) {
        ScriptedUpdate run(8);
        run.line.faults[{BootStep::Erase, 0}] = play({both});
        EXPECT_EQ(run.update().failure.kind, ending);
        EXPECT_EQ(run.result.step, ending == Kind::None ? UpdateStep::Finish : UpdateStep::Release);
    }
}

TEST(UpdateRun, PutsImagesOfEveryLengthIntoTheDeviceOnlyErasingModelsAreWaitedFor)
{
    // The last frame of 243 bytes begins with the value of the sync byte.
    for (const qsizetype length : {1, 243, 249, 250, 251, 500, 65'536}) {
        for (const int modelCode : {0, 1, 2, 8, 255}) {
            SCOPED_TRACE(testing::Message() << length << " bytes, model " << modelCode);
            ScriptedUpdate run(modelCode, length);
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
    ScriptedUpdate run(8);
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
        ScriptedUpdate run(model, 400);
        run.line.faults[{BootStep::Erase, 0}] = play({});
        EXPECT_EQ(run.update(parameters).frames, frames);
        EXPECT_EQ(run.line.lastSent.toHex().left(18), header);
    }
}

TEST(UpdateRun, AQueryTellsTheVersionAndLeavesTheDeviceRunning)
{
    for (const auto &[fault, kind, version] :
         {std::tuple(play({"="}), Kind::None, 8), {play({}), Kind::TimedOut, -1}}) {
        ScriptedUpdate run(8);
        run.line.faults[{BootStep::Connect, 0}] = fault;
        EXPECT_EQ(queryTargetVersion(run.line, kVornBoot, run).failure.kind, kind);
        EXPECT_EQ(run.targetVersion, version);
        EXPECT_EQ(run.line.lastSent.toHex(), kind == Kind::None ? "0302fdfc" : "0301fefc");
        EXPECT_FALSE(run.line.rts.back());
    }
}

// Success is reported if and only if the device holds the image and has said so.
TEST(UpdateRun, WhateverTheDeviceDoesTheReportIsTrue)
{
    const char *wanted = std::getenv("VORN_TEST_UPDATES");
    const int updates = wanted ? std::atoi(wanted) : 5'000;
    const char *givenSeed = std::getenv("VORN_TEST_SEED");
    const auto firstSeed =
        givenSeed ? static_cast<unsigned>(std::atoi(givenSeed)) : std::random_device{}();
    std::printf("%d updates, seeds from %u\n", updates, firstSeed);
    int successes = 0;
    for (int i = 0; i < updates && !::testing::Test::HasFailure(); ++i) {
        const unsigned seed = firstSeed + static_cast<unsigned>(i);
        testing::Message story;
        story << "seed " << seed;
        std::mt19937 random(seed);
        const auto below = [&](std::size_t limit) { return random() % limit; };
        ScriptedUpdate run(static_cast<int>(below(10)), static_cast<qsizetype>(1 + below(1000)));
        bool isConfirmed = true;
        for (std::size_t faults = below(3); faults > 0; --faults) {
            const Variant &variant = kVariants[below(kVariants.size())];
            const Row &row = kRows[below(kRows.size())];
            story << ", " << variant.name << " at step " << static_cast<int>(row.endsAt)
                  << ", frame " << row.frame;
            run.line.faults[row.step] = variant.at(row);
            if (row.step.first == BootStep::Last)
                isConfirmed = variant.ending == Kind::None;
        }
        const UpdateResult result = run.update();
        story << "; ended at step " << static_cast<int>(result.step);
        SCOPED_TRACE(story);
        EXPECT_EQ(result.succeeded(), run.deviceHoldsImage() && isConfirmed);
        EXPECT_FALSE(run.line.rts.back());
        EXPECT_EQ(run.ends, result.failure.kind == Kind::Abandoned ? 0 : 1);
        successes += result.succeeded() ? 1 : 0;
    }
    // Neither all nor none: the faults strike, and not always.
    EXPECT_GT(successes, updates / 10);
    EXPECT_LT(successes, updates);
}

} // namespace
} // namespace vorn
