#include "app/ProgressTexts.h"

#include "tests/support/QtPrinting.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

using namespace std::chrono_literals;

const SteadyTime kStart{1h};

TEST(TimeLeft, IsUnknownAtFirstThenNearTheTruthAndNeverJumps)
{
    TimeLeft left;
    left.update(0, kStart);
    std::optional<std::chrono::seconds> last;
    // Forty seconds at an even rate, but for three seconds in the middle in which nothing comes.
    double share = 0;
    for (auto passed = 100ms; passed <= 43s; passed += 100ms) {
        if (passed < 20s || passed > 23s)
            share = std::min(share + 1.0 / 400, 1.0);
        left.update(share, kStart + passed);
        const auto now = left.at(kStart + passed);
        ASSERT_EQ(now.has_value(), passed >= 1s) << passed.count();
        if (!now)
            continue;
        const auto truth =
            std::chrono::ceil<std::chrono::seconds>((passed < 20s ? 40s : 43s) - passed);
        if (passed < 20s || passed > 30s) {
            EXPECT_NEAR(static_cast<double>(now->count()), static_cast<double>(truth.count()), 2)
                << passed.count();
        }
        if (last) {
            EXPECT_LE(std::abs((*now - *last).count()), 2) << passed.count();
        }
        EXPECT_GE(now->count(), 0);
        last = now;
    }
    EXPECT_EQ(left.at(kStart + 60s), std::nullopt);
}

TEST(RunProgress, SaysTheElapsedTimeAndWhatIsAwaitedAfterASecondOfSilence)
{
    RunProgress run;
    run.start(kStart);
    run.update({.step = UpdateStep::Erase, .limit = 30s}, kStart + 1s);
    EXPECT_EQ(run.text(kStart + 1900ms, kStart), "1 s elapsed.");
    EXPECT_EQ(run.text(kStart + 4s, kStart),
              "Waiting for the device to erase, 3 s of at most 30 s. 4 s elapsed.");
    run.update({.step = UpdateStep::Release, .limit = 30s}, kStart + 70s);
    EXPECT_EQ(run.text(kStart + 72s, kStart),
              "Waiting for the answer to the download header, 2 s of at most 30 s. "
              "1 min 12 s elapsed.");
    const auto sent = kStart + 80s;
    for (int i = 0; i <= 50; ++i)
        run.update({.step = UpdateStep::Data, .frame = i, .frames = 100, .limit = 5s},
                   sent + i * 100ms);
    EXPECT_EQ(run.text(sent + 5s, sent + 5s), "1 min 25 s elapsed, about 5 s left.");
    EXPECT_EQ(run.text(sent + 7s, sent + 5s),
              "Waiting for the device to take the next data, 2 s of at most 5 s. "
              "1 min 27 s elapsed, about 3 s left.");
    UpdateResult result;
    result.imageBytes = qint64{512} * 1024;
    result.elapsed = 6100ms;
    result.sending = 4s;
    EXPECT_EQ(textOfUpdateTime(result), "The update took 6.1 s; the image was sent at 128 KiB/s.");
}

TEST(DownloadProgress, SaysHowMuchHasComeAndWhenNothingComes)
{
    DownloadProgress download;
    download.start(kStart);
    EXPECT_EQ(download.text(kStart + 2s), "Waiting for the server, 2 s. 2 s elapsed.");
    for (int i = 0; i <= 20; ++i)
        download.update(qint64{i} * 102'400, 4'096'000, kStart + 2s + i * 100ms);
    EXPECT_EQ(download.text(kStart + 4s), "1.95 MiB of 3.91 MiB. 4 s elapsed, about 2 s left.");
    EXPECT_EQ(download.textOfTime(kStart + 4s), "1.95 MiB in 4.0 s, 500 KiB/s.");
    download.start(kStart);
    download.update(2048, 0, kStart + 1s);
    EXPECT_EQ(download.text(kStart + 1s), "2.00 KiB so far. 1 s elapsed.");
    EXPECT_EQ(download.text(kStart + 4s),
              "Waiting for the server, 3 s of at most 1 min 0 s. 4 s elapsed.");
}

} // namespace
} // namespace vorn
