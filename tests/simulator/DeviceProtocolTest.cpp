#include "simulator/SimulatedDevice.h"
#include "tests/simulator/TestUpdater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorn::test {
namespace {

using Clock = std::chrono::steady_clock;

DeviceOptions model(int code)
{
    DeviceOptions options;
    options.modelCode = code;
    return options;
}

TEST(Device, TakesImagesOfEveryLengthByteForByte)
{
    // 243 and 493 bytes end in a frame whose count byte has the value of the sync byte.
    for (const int code : {1, 2, 8}) {
        SimulatedDevice device(model(code));
        ASSERT_TRUE(device.start());
        const TestUpdater updater(device.path());
        int updates = 0;
        for (const int length : {1, 243, 249, 250, 251, 493, 500, 65536}) {
            const QByteArray image = sampleImage(length);
            ASSERT_TRUE(updater.update(image, code < 2 ? 1 : 2)) << code << ' ' << length;
            const DeviceReport report = device.report();
            EXPECT_EQ(report.image, image);
            EXPECT_EQ(report.updates, ++updates);
            EXPECT_EQ(report.downloadFrames, length / 250 + 1);
        }
        EXPECT_EQ(device.report().errors, QStringList());
        EXPECT_EQ(device.report().exchanges, updates);
    }
}

TEST(Device, AnswersTheConnectCommandWithItsModelCode)
{
    SimulatedDevice device(model(200));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_EQ(updater.ask(Sync), Ack);
    EXPECT_EQ(updater.ask(Connect, 4), QByteArray::fromHex("af0000c8"));
}

TEST(Device, ErasesFromModelCodeTwoOnAndAcknowledgesTwice)
{
    for (const auto &[code, answers] : {std::pair(1, 1), std::pair(2, 2)}) {
        DeviceOptions options = model(code);
        options.eraseTime = 150ms;
        SimulatedDevice device(options);
        ASSERT_TRUE(device.start());
        const TestUpdater updater(device.path());
        ASSERT_TRUE(updater.handshake());
        const auto sent = Clock::now();
        EXPECT_EQ(updater.ask(header(10), answers), Ack.repeated(answers));
        EXPECT_EQ(Clock::now() - sent >= 150ms, code == 2);
        EXPECT_EQ(updater.receive(1, 20ms), QByteArray());
    }
}

TEST(Device, RefusesAndNamesEachOffence)
{
    const QByteArray whole(250, 'x');
    struct Case
    {
        const char *name;
        QByteArray good; // after the download command, each acknowledged
        QByteArray bad;
        const char *error;
    };
    QByteArray badSum = frame(whole);
    badSum.back() = static_cast<char>(badSum.back() + 1);
    const std::array<Case, 9> cases{{
        {"checksum", header(500), badSum, "checksum"},
        {"order", {}, Version, "count 3 where the download header with the count 9"},
        {"frame before header", {}, frame(whole), "count 251 where the download header"},
        {"address", {}, header(10, 0x08000000), "load address 08000000"},
        {"no image", {}, header(0), "image of 0 bytes"},
        {"too long", {}, header(1001), "image of 1001 bytes for a flash of 1000"},
        {"short frame", header(500), frame(QByteArray(249, 'x')), "count 251 was due"},
        {"too much at the end", header(10), frame(QByteArray(11, 'x')), "count 11 was due"},
        {"count 0", header(10), QByteArray(1, '\0'), "count 0"},
    }};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        DeviceOptions options = model(1);
        options.flashSize = 1000;
        SimulatedDevice device(options);
        ASSERT_TRUE(device.start());
        const TestUpdater updater(device.path());
        ASSERT_TRUE(updater.handshake());
        if (!c.good.isEmpty()) {
            ASSERT_EQ(updater.ask(c.good), Ack);
        }
        EXPECT_EQ(updater.ask(c.bad), Nak);
        const DeviceReport report = device.report();
        ASSERT_EQ(report.errorCount, 1);
        EXPECT_THAT(report.errors.first().toStdString(), testing::HasSubstr(c.error));
        EXPECT_EQ(report.refusals, 1);
        EXPECT_EQ(report.updates, 0);
        EXPECT_TRUE(updater.update(sampleImage(10), 1)) << "after a new sync byte all is well";
    }
}

TEST(Device, TakesTheCommandsInTheirOrderOnly)
{
    SimulatedDevice device(model(1));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_EQ(updater.ask(Sync), Ack);
    EXPECT_EQ(updater.ask(Version), Nak);
    EXPECT_THAT(
        device.report().errors,
        testing::Contains(QStringLiteral("the command 02 FD where the connect command was due")));
}

TEST(Device, NotesAFrameThatComesBeforeItsRelease)
{
    DeviceOptions options = model(8);
    options.eraseTime = 100ms;
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.handshake());
    updater.send(header(10) + frame(QByteArray(10, 'x')));
    EXPECT_EQ(updater.receive(3), Ack.repeated(3));
    EXPECT_THAT(device.report().errors,
                testing::ElementsAre(QStringLiteral("a data frame came before it was released")));
}

TEST(Device, BeginsANewExchangeWithEachSyncByte)
{
    SimulatedDevice device(model(1));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    const std::array<QByteArray, 6> steps{Sync,     Connect,     Version,
                                          Download, header(500), frame(QByteArray(250, 'x'))};
    for (std::size_t broken = 1; broken <= steps.size(); ++broken) {
        for (std::size_t i = 0; i < broken; ++i)
            ASSERT_TRUE(updater.ask(steps[i], i == 1 ? 4 : 1).startsWith(Ack));
    }
    ASSERT_EQ(updater.ask(Sync), Ack);
    EXPECT_EQ(device.report().exchanges, 7);
    EXPECT_EQ(device.report().errorCount, 0);
}

TEST(Device, TellsASyncByteFromAFrameOfThatCount)
{
    SimulatedDevice device(model(1));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.handshake());
    ASSERT_EQ(updater.ask(header(243)), Ack);
    EXPECT_EQ(updater.ask(Sync), Ack) << "nothing follows it, so it is no frame";
    EXPECT_EQ(device.report().exchanges, 2);
    EXPECT_EQ(device.report().errorCount, 0);
}

TEST(Device, RecoversFromAFrameThatStopsInTheMiddle)
{
    SimulatedDevice device(model(1));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.handshake());
    ASSERT_EQ(updater.ask(header(300)), Ack);
    updater.send(frame(QByteArray(250, 'x')).first(100));
    EXPECT_EQ(updater.ask(Sync), Ack) << "the sync byte counts although a frame was unfinished";
    EXPECT_EQ(device.report().exchanges, 2);
    EXPECT_EQ(device.report().errorCount, 1);
    EXPECT_TRUE(updater.update(sampleImage(300), 1));
}

TEST(Device, IgnoresBytesBeforeASyncByteButNotesThem)
{
    SimulatedDevice device(model(1));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    EXPECT_EQ(updater.ask(QByteArray("AT\r") + Sync), Ack);
    EXPECT_THAT(device.report().errors, testing::ElementsAre(QStringLiteral(
                                            "3 bytes before a sync byte, the first one 41")));
}

TEST(Device, PacesTheLineInBothDirections)
{
    DeviceOptions options = model(1);
    options.baud = 115200;
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.handshake());
    const QByteArray image = sampleImage(5000);
    const auto begin = Clock::now();
    ASSERT_TRUE(updater.update(image, 1));
    const auto took = Clock::now() - begin;
    // Sync byte, three commands, header, 20 frames, the last frame; 30 bytes of answers.
    const int bytes = 1 + 12 + 10 + 20 * 252 + 2 + (1 + 4 + 1 + 1 + 1 + 20 + 1);
    const auto line = std::chrono::microseconds(bytes * 10'000'000LL / 115200);
    EXPECT_GE(took, line);
    EXPECT_LE(took, line * 2 + 500ms);
    EXPECT_EQ(device.report().image, image);
}

TEST(Device, HoldsEachAnswerBackForTheAnswerDelay)
{
    DeviceOptions options = model(1);
    options.answerDelay = 20ms;
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    const auto begin = Clock::now();
    ASSERT_TRUE(updater.handshake());
    EXPECT_GE(Clock::now() - begin, 80ms);
}

TEST(Device, ReportsHashCountsAndTimes)
{
    DeviceOptions options = model(8);
    options.eraseTime = 50ms;
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.update(QByteArray("abc"), 2));
    const QJsonObject json = device.report().toJson();
    EXPECT_EQ(json.value(QStringLiteral("imageSha256")).toString().toStdString(),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(json.value(QStringLiteral("imageLength")), 3);
    EXPECT_EQ(json.value(QStringLiteral("updates")), 1);
    EXPECT_EQ(json.value(QStringLiteral("frames")), 5);
    EXPECT_EQ(json.value(QStringLiteral("opens")), 1);
    const QJsonObject download = json.value(QStringLiteral("download")).toObject();
    const double header = download.value(QStringLiteral("headerAfterMs")).toDouble();
    const double release = download.value(QStringLiteral("dataReleasedAfterMs")).toDouble();
    const double end = download.value(QStringLiteral("lastAnswerAfterMs")).toDouble();
    EXPECT_GT(header, 0);
    EXPECT_GE(release, header + 50);
    EXPECT_GT(end, release);
    EXPECT_GT(download.value(QStringLiteral("medianGapMs")).toDouble(), 0);
}

TEST(Device, KeepsTheLastImageWhileAnotherDownloadIsUnfinished)
{
    SimulatedDevice device(model(1));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.update(QByteArray("abc"), 1));
    ASSERT_TRUE(updater.handshake());
    ASSERT_EQ(updater.ask(header(300)), Ack);
    ASSERT_EQ(updater.ask(frame(QByteArray(250, 'x'))), Ack);
    const DeviceReport report = device.report();
    EXPECT_EQ(report.image, QByteArray("abc"));
    EXPECT_EQ(report.partialImage, QByteArray(250, 'x'));
    EXPECT_EQ(report.declaredLength, 300);
}

} // namespace
} // namespace vorn::test
