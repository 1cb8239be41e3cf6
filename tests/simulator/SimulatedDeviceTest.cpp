#include "tests/simulator/TestUpdater.h"
#include "tests/support/Eventually.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace vorn::test {
namespace {

const DeviceOptions kNoErase{.modelCode = 1};

TEST(Device, RefusesAndNamesEachOffence)
{
    const QByteArray whole(250, 'x');
    QByteArray badSum = frame(whole);
    badSum.back() = static_cast<char>(badSum.back() + 1);
    // Behind the download command: what is acknowledged, and what is refused and why.
    for (const auto &[good, bad, error] :
         {std::tuple(header(500), badSum, "checksum"),
          {{}, kVersion, "count 3 where the download header with the count 9"},
          {{}, frame(whole), "count 251 where the download header"},
          {{}, header(10, 0x08000000), "load address 08000000"},
          {{}, header(0), "image of 0 bytes"},
          {{}, header(1001), "image of 1001 bytes for a flash of 1000"},
          {header(500), frame(whole.first(249)), "count 251 was due"},
          {header(10), frame(whole.first(11)), "count 11 was due"},
          {header(10), QByteArray(1, '\0'), "count 0"}}) {
        SCOPED_TRACE(error);
        const TestedDevice tested({.modelCode = 1, .flashSize = 1000});
        ASSERT_TRUE(tested.updater.handshake());
        ASSERT_EQ(tested.updater.ask(good, good.isEmpty() ? 0 : 1), good.isEmpty() ? "" : kAck);
        EXPECT_EQ(tested.updater.ask(bad), kNak);
        const DeviceReport report = tested.device.report();
        ASSERT_EQ(report.errorCount, 1);
        EXPECT_THAT(report.errors.first().toStdString(), testing::HasSubstr(error));
        EXPECT_EQ(report.refusals, 1);
        EXPECT_TRUE(tested.updater.update(10)) << "after a new sync byte all is well";
    }
}

TEST(Device, TakesTheCommandsInTheirOrderBehindASyncByteOnly)
{
    const TestedDevice tested(kNoErase);
    ASSERT_EQ(tested.updater.ask(QByteArray("AT\r") + kSync), kAck);
    EXPECT_EQ(tested.updater.ask(kVersion), kNak);
    EXPECT_EQ(tested.device.report().errors,
              QStringList({"3 bytes before a sync byte, the first one 41",
                           "the command 02 FD where the connect command was due"}));
}

TEST(Device, NotesAFrameThatComesBeforeItsRelease)
{
    const TestedDevice tested({.eraseTime = 100ms});
    ASSERT_TRUE(tested.updater.handshake());
    const QByteArray both = header(10) + frame(QByteArray(10, 'x'));
    EXPECT_EQ(tested.updater.ask(both, 3), kAck.repeated(3));
    EXPECT_EQ(tested.device.report().errors,
              QStringList("a data frame came before it was released"));
}

TEST(Device, TellsASyncByteFromAFrameOfThatCountAndFromAnUnfinishedFrame)
{
    const TestedDevice tested(kNoErase);
    EXPECT_TRUE(tested.updater.update(243));
    ASSERT_TRUE(tested.updater.handshake());
    ASSERT_EQ(tested.updater.ask(header(243)), kAck);
    EXPECT_EQ(tested.updater.ask(kSync), kAck) << "nothing follows it, so it is not a frame";
    EXPECT_EQ(tested.device.report().errorCount, 0);

    ASSERT_TRUE(tested.updater.handshake());
    ASSERT_EQ(tested.updater.ask(header(300)), kAck);
    tested.updater.send(frame(QByteArray(250, 'x')).first(100));
    EXPECT_EQ(tested.updater.ask(kSync), kAck) << "it counts although a frame is unfinished";
    EXPECT_EQ(tested.device.report().exchanges, 5);
    EXPECT_EQ(tested.device.report().errorCount, 1);
    EXPECT_TRUE(tested.updater.update(300));
}

TEST(Device, PacesTheLineInBothDirectionsAndHoldsEachAnswerBack)
{
    const TestedDevice tested({.modelCode = 1, .answerDelay = 20ms, .baud = 115200});
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(tested.updater.update(5000));
    const auto took = std::chrono::steady_clock::now() - begin;
    // Sync byte, three commands, header, 20 frames, the last frame; 29 bytes in 26 answers.
    const int bytes = 1 + 12 + 10 + 20 * 252 + 2 + 29;
    const auto least = std::chrono::microseconds(bytes * 10'000'000LL / 115200) + 26 * 20ms;
    EXPECT_GE(took, least);
    EXPECT_LE(took, least * 2 + 500ms);
}

DeviceOptions with(const char *fault)
{
    return {.faults = {parseFault(QLatin1String(fault), nullptr).value()}};
}

// An update of 300 bytes, frame by frame, for as long as answers are expected.
TEST(DeviceFaults, ChangeTheAnswerToTheirStepAndNoOther)
{
    const QByteArrayList frames{kSync,
                                kConnect,
                                kVersion,
                                kDownload,
                                header(300),
                                frame(QByteArray(250, 'x')),
                                frame(QByteArray(50, 'x'))};
    // The answers in hexadecimal, "-" for none.
    for (const auto &[fault, expected] : {std::pair("connect=silence", "af -"),
                                          {"erase=garbage", "af af000008 af af 55005a"},
                                          {"frame:2=silence", "af af000008 af af afaf af -"},
                                          {"last=refuse", "af af000008 af af afaf af fc"},
                                          {"version=noise", "af af000008 55005aaf af afaf af af"},
                                          {"sync=duplicate", "afaf af000008 af af afaf af af"},
                                          {"header=late:80", "af af000008 af af afaf af af"},
                                          {"last=late:80", "af af000008 af af afaf af af"}}) {
        SCOPED_TRACE(fault);
        const TestedDevice tested(with(fault));
        const auto begin = std::chrono::steady_clock::now();
        const QByteArrayList answers = QByteArray(expected).split(' ');
        for (qsizetype i = 0; i < answers.size(); ++i) {
            const QByteArray answer = QByteArray::fromHex(answers[i]);
            EXPECT_EQ(tested.updater.ask(frames[i], answer.size()), answer);
        }
        const auto least = QByteArray(fault).endsWith("late:80") ? 80ms : 0ms;
        EXPECT_GE(std::chrono::steady_clock::now() - begin, least);
        EXPECT_EQ(tested.updater.receiveChunk(60ms).toHex(), "") << "nothing more comes";
        EXPECT_EQ(tested.device.report().errors, QStringList());
        const bool whole = answers.size() == frames.size() && answers.back() == "af";
        EXPECT_EQ(tested.device.report().updates, whole ? 1 : 0);
    }
}

TEST(DeviceFaults, StrikeAfterSoManyTimesAndSoOften)
{
    TestedDevice tested(with("sync=refuse,after=1,times=2"));
    for (const QByteArray &answer : {kAck, kNak, kNak, kAck, kAck})
        EXPECT_EQ(tested.updater.ask(kSync), answer);
    tested.device.setFaults({});
    EXPECT_EQ(tested.updater.ask(kSync), kAck);
}

TEST(DeviceFaults, CutTheConnectAnswerIntoPiecesAndJoinThoseAroundTheErase)
{
    const TestedDevice tested({.answerDelay = 30ms, // apart, the second answer comes that later
                               .connectPieces = {1, 2},
                               .pieceGap = 200ms,
                               .joinEraseAnswers = true});
    ASSERT_EQ(tested.updater.ask(kSync), kAck);
    const auto begin = std::chrono::steady_clock::now();
    tested.updater.send(kConnect);
    for (const QByteArray &piece : {kAck, QByteArray(2, '\0'), QByteArray(1, 8)})
        EXPECT_EQ(tested.updater.receiveChunk(), piece);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 400ms);
    tested.updater.ask(kVersion);
    tested.updater.ask(kDownload);
    tested.updater.send(header(10));
    EXPECT_EQ(tested.updater.receiveChunk(), kAck.repeated(2));
    EXPECT_EQ(tested.device.report().errorCount, 0);
}

TEST(Device, IsUnpluggedAndComesBackOnANewTerminal)
{
    const QTemporaryDir directory;
    DeviceOptions options = with("connect=unplug,times=1");
    options.directory = directory.path();
    options.name = "usbserial-1";
    options.replugAfter = 100ms;
    // What a simulator that was killed leaves.
    ASSERT_TRUE(QFile::link("/none", directory.filePath(options.name)));
    TestedDevice tested(options);
    const auto linked = [path = tested.device.path()] { return QFile::symLinkTarget(path); };
    EXPECT_EQ(tested.updater.ask(kSync), kAck);
    EXPECT_EQ(tested.updater.ask(kConnect), QByteArray()) << "the terminal hangs up";
    EXPECT_FALSE(tested.device.report().plugged);
    EXPECT_EQ(linked(), "");
    ASSERT_TRUE(eventually([&] { return tested.device.report().plugged; }));
    EXPECT_EQ(linked(), tested.device.slavePath());

    // What one program leaves unread is not for the next one.
    TestUpdater(tested.device.path()).send(kSync);
    ASSERT_TRUE(tested.device.waitForExchanges(2, 5s));
    ASSERT_TRUE(eventually([&] { return !tested.device.report().inUse; }));
    const TestUpdater next(tested.device.path());
    ASSERT_TRUE(eventually([&] { return tested.device.report().opens == 3; }));
    EXPECT_EQ(next.receiveChunk(60ms), QByteArray());
    EXPECT_EQ(next.ask(kSync), kAck);
}

TEST(FaultNotation, RejectsWhatItDoesNotKnow)
{
    for (const char *text :
         {"", "refuse", "conect=refuse", "connect=refused", "frame=refuse", "frame:0=refuse",
          "frame:x=refuse", "frame:1:2=refuse", "connect:1=refuse", "connect=late", "last=late:-1",
          "last=refuse:5", "last=refuse,often=1", "last=refuse,times=x", "last=refuse,times"}) {
        QString problem;
        EXPECT_FALSE(parseFault(QLatin1String(text), &problem)) << text;
        EXPECT_THAT(problem.toStdString(), testing::HasSubstr(text));
    }
}

} // namespace
} // namespace vorn::test
