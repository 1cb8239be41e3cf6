#include "tests/simulator/TestUpdater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorn::test {
namespace {

DeviceOptions thatDoesNotErase()
{
    DeviceOptions options;
    options.modelCode = 1;
    return options;
}

TEST(Device, RefusesAndNamesEachOffence)
{
    const QByteArray whole(250, 'x');
    QByteArray badSum = frame(whole);
    badSum.back() = static_cast<char>(badSum.back() + 1);
    struct Case
    {
        const char *name;
        QByteArray good; // after the download command, acknowledged
        QByteArray bad;
        const char *error;
    };
    const Case cases[] = {
        {"checksum", header(500), badSum, "checksum"},
        {"order", {}, Version, "count 3 where the download header with the count 9"},
        {"frame before header", {}, frame(whole), "count 251 where the download header"},
        {"address", {}, header(10, 0x08000000), "load address 08000000"},
        {"no image", {}, header(0), "image of 0 bytes"},
        {"too long", {}, header(1001), "image of 1001 bytes for a flash of 1000"},
        {"short frame", header(500), frame(whole.first(249)), "count 251 was due"},
        {"too much at the end", header(10), frame(whole.first(11)), "count 11 was due"},
        {"count 0", header(10), QByteArray(1, '\0'), "count 0"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        DeviceOptions options = thatDoesNotErase();
        options.flashSize = 1000;
        const TestedDevice tested(options);
        ASSERT_TRUE(tested.updater.handshake());
        if (!c.good.isEmpty()) {
            ASSERT_EQ(tested.updater.ask(c.good), Ack);
        }
        EXPECT_EQ(tested.updater.ask(c.bad), Nak);
        const DeviceReport report = tested.device.report();
        ASSERT_EQ(report.errorCount, 1);
        EXPECT_THAT(report.errors.first().toStdString(), testing::HasSubstr(c.error));
        EXPECT_EQ(report.refusals, 1);
        EXPECT_EQ(report.updates, 0);
        EXPECT_TRUE(tested.updater.update(10)) << "after a new sync byte all is well";
    }
}

TEST(Device, TakesTheCommandsInTheirOrderBehindASyncByteOnly)
{
    const TestedDevice tested(thatDoesNotErase());
    ASSERT_EQ(tested.updater.ask(QByteArray("AT\r") + Sync), Ack);
    EXPECT_EQ(tested.updater.ask(Version), Nak);
    EXPECT_EQ(tested.device.report().errors,
              QStringList({"3 bytes before a sync byte, the first one 41",
                           "the command 02 FD where the connect command was due"}));
}

TEST(Device, NotesAFrameThatComesBeforeItsRelease)
{
    DeviceOptions options;
    options.eraseTime = 100ms;
    const TestedDevice tested(options);
    ASSERT_TRUE(tested.updater.handshake());
    tested.updater.send(header(10) + frame(QByteArray(10, 'x')));
    EXPECT_EQ(tested.updater.receive(3), Ack.repeated(3));
    EXPECT_EQ(tested.device.report().errors,
              QStringList("a data frame came before it was released"));
}

TEST(Device, TellsASyncByteFromAFrameOfThatCountAndFromAnUnfinishedFrame)
{
    const TestedDevice tested(thatDoesNotErase());
    EXPECT_TRUE(tested.updater.update(243));
    ASSERT_TRUE(tested.updater.handshake());
    ASSERT_EQ(tested.updater.ask(header(243)), Ack);
    EXPECT_EQ(tested.updater.ask(Sync), Ack) << "nothing follows it, so it is no frame";
    EXPECT_EQ(tested.device.report().errorCount, 0);

    ASSERT_TRUE(tested.updater.handshake());
    ASSERT_EQ(tested.updater.ask(header(300)), Ack);
    tested.updater.send(frame(QByteArray(250, 'x')).first(100));
    EXPECT_EQ(tested.updater.ask(Sync), Ack)
        << "the sync byte counts although a frame was unfinished";
    EXPECT_EQ(tested.device.report().exchanges, 5);
    EXPECT_EQ(tested.device.report().errorCount, 1);
    EXPECT_TRUE(tested.updater.update(300));
}

TEST(Device, PacesTheLineInBothDirectionsAndHoldsEachAnswerBack)
{
    DeviceOptions options = thatDoesNotErase();
    options.baud = 115200;
    options.answerDelay = 20ms;
    const TestedDevice tested(options);
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(tested.updater.update(5000));
    const auto took = std::chrono::steady_clock::now() - begin;
    // Sync byte, three commands, header, 20 frames, the last frame; 29 bytes in 26 answers.
    const int bytes = 1 + 12 + 10 + 20 * 252 + 2 + 29;
    const auto least = std::chrono::microseconds(bytes * 10'000'000LL / 115200) + 26 * 20ms;
    EXPECT_GE(took, least);
    EXPECT_LE(took, least * 2 + 500ms);
}

} // namespace
} // namespace vorn::test
