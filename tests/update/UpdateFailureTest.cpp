#include "tests/update/UpdateRig.h"

namespace vorn {
namespace {

using Outcome = UpdateResult::Outcome;

const QString kFailed = "Prompt:Firmware update failed,please try again";
const QString kNoResponse = "Prompt:Device does not respond during firmware update";
const QString kEraseFailed =
    "Prompt:Failed to erase the fixed phone of the device ,please try again";
const QStringList kProgress{"Prompt:0%progress,updating firmware",
                            "Prompt:33%progress,updating firmware",
                            "Prompt:66%progress,updating firmware"};

// An image of three data frames and an empty last one.
constexpr qsizetype kImageLength = 750;

// What a user sees when the device does not give the right answer.
struct Row
{
    BootStep step;
    int frame;
    int modelCode;
    UpdateStep endsAt;
    qint64 endsAtFrame;
    qsizetype progressTexts;
    QStringList afterSilence;
    QStringList afterRefusal = {};
};

const std::vector<Row> kRows{
    {BootStep::Sync, 0, 8, UpdateStep::Connect, -1, 0, {kFailed, kNoResponse}, {kNoResponse}},
    {BootStep::Connect, 0, 8, UpdateStep::QueryVersion, -1, 0, {kFailed}},
    {BootStep::Version, 0, 8, UpdateStep::Download, -1, 0, {kFailed, kFailed}, {kFailed}},
    {BootStep::Download, 0, 8, UpdateStep::Header, -1, 0, {kFailed}},
    {BootStep::Header, 0, 2, UpdateStep::Erase, -1, 0, {kEraseFailed}},
    {BootStep::Header, 0, 1, UpdateStep::Data, 0, 0, {kFailed}},
    {BootStep::Erase, 0, 8, UpdateStep::Erase, -1, 0, {kEraseFailed}},
    {BootStep::Ready, 0, 8, UpdateStep::Data, 0, 0, {kFailed}},
    {BootStep::Frame, 1, 8, UpdateStep::Data, 1, 1, {kFailed}},
    {BootStep::Frame, 2, 8, UpdateStep::Data, 2, 2, {kFailed}},
    {BootStep::Frame, 3, 8, UpdateStep::LastData, 3, 3, {kFailed}},
    {BootStep::Last, 0, 8, UpdateStep::Finish, -1, 3, {kFailed}},
};

TEST(UpdateFailure, EndsTheRunWithTheTextsForItAndNoClosingPulse)
{
    UpdateTimings timings = patientTimings();
    timings.answer = timings.erase = 3s;
    struct Case
    {
        const Row &row;
        FaultKind kind;
        std::unique_ptr<UpdateRig> rig;
    };
    std::vector<Case> cases;
    for (const Row &row : kRows) {
        for (const FaultKind kind : {FaultKind::Refuse, FaultKind::Silence, FaultKind::Garbage}) {
            DeviceOptions options = with(&DeviceOptions::modelCode, row.modelCode);
            options.faults = {{.step = row.step, .kind = kind, .frame = row.frame}};
            cases.push_back({row, kind, std::make_unique<UpdateRig>(options, timings)});
            cases.back().rig->update(kImageLength);
        }
    }
    for (const Case &each : cases)
        each.rig->result();
    cases.back().rig->settle();
    for (const auto &[row, kind, rig] : cases) {
        const bool refused = kind == FaultKind::Refuse;
        SCOPED_TRACE(testing::Message()
                     << (refused ? "refusal" : "silence or garbage") << " at step "
                     << static_cast<int>(row.step) << ", frame " << row.frame);
        const UpdateResult result = rig->result();
        EXPECT_EQ(result.outcome, refused ? Outcome::Refused : Outcome::TimedOut);
        EXPECT_EQ(result.step, row.endsAt);
        EXPECT_EQ(result.frame, row.endsAtFrame);
        EXPECT_NE(result.description, QString());
        EXPECT_EQ(rig->events, kPulse + kProgress.first(row.progressTexts) +
                                   (refused ? row.afterRefusal : row.afterSilence));
        EXPECT_EQ(rig->device.report().errors, QStringList());
        EXPECT_EQ(rig->device.report().updates, 0);
    }
}

TEST(UpdateFailure, AnUnusableImageIsFoundBeforeTheDownloadCommand)
{
    UpdateRig rig(with(&DeviceOptions::faults,
                       {{.step = BootStep::Connect, .kind = FaultKind::Late, .delay = 300ms}}));
    const auto expectNoDownload = [&](int run, const QString &text, Outcome outcome) {
        const UpdateResult result = rig.result(static_cast<std::size_t>(run));
        EXPECT_EQ(result.outcome, outcome);
        EXPECT_EQ(result.step, UpdateStep::ReadImage);
        EXPECT_NE(result.description, QString());
        // Each run sent the connect command and the version query, and nothing after them.
        EXPECT_TRUE(
            eventually([&] { return rig.device.report().frames >= std::int64_t{2} * run; }));
        rig.settle();
        EXPECT_EQ(rig.device.report().frames, 2 * run);
        EXPECT_EQ(rig.device.report().errors, QStringList());
        EXPECT_EQ(std::exchange(rig.events, {}), kPulse + QStringList{text});
    };
    rig.update(300);
    ASSERT_TRUE(eventually([&] { return rig.device.report().exchanges == 1; }));
    ASSERT_TRUE(QFile::remove(rig.imagePath)); // during the handshake
    expectNoDownload(1, kFailed, Outcome::ImageUnusable);
    rig.updater->startUpdate(rig.port, {});
    expectNoDownload(2, texts::kNoFirmwareSelected, Outcome::NoFirmwareChosen);
    rig.update(0);
    expectNoDownload(3, kFailed, Outcome::ImageUnusable);
}

} // namespace
} // namespace vorn
