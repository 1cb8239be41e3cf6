#include "tests/simulator/TestUpdater.h"
#include "tests/update/SessionRig.h"

#include <QRegularExpression>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace vorn::test {
namespace {

TEST(Device, RefusesAndNamesEachOffence)
{
    const QByteArray whole(250, 'x');
    QByteArray badSum = DataFrame(whole);
    badSum.back() = static_cast<char>(badSum.back() + 1);
    // Behind the download command: what is acknowledged, and what is refused and why.
    for (const auto &[good, bad, error] :
         {std::tuple(header(500), badSum, "checksum"),
          {kSync, CmdQueryVersion(), "the command 02 FD where the connect command was due"},
          {{}, CmdQueryVersion(), "count 3 where the download header with the count 9"},
          {{}, DataFrame(whole), "count 251 where the download header"},
          {{}, DownloadHeader(0x08000000, 10), "load address 08000000"},
          {{}, header(0), "image of 0 bytes"},
          {{}, header(1001), "image of 1001 bytes for a flash of 1000"},
          {header(500), DataFrame(whole.first(249)), "count 251 was due"},
          {header(10), DataFrame(whole.first(11)), "count 11 was due"},
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

TEST(Device, NotesAFrameThatComesBeforeItsRelease)
{
    const TestedDevice tested({.eraseTime = 100ms});
    ASSERT_TRUE(tested.updater.handshake());
    const QByteArray both = header(10) + DataFrame(QByteArray(10, 'x'));
    EXPECT_EQ(tested.updater.ask(both, 3), kAck.repeated(3));
    EXPECT_EQ(tested.device.report().errors,
              QStringList("a data frame came before it was released"));
}

TEST(Device, TellsASyncByteFromAFrameOfThatCountAndFromAnUnfinishedFrame)
{
    const TestedDevice tested({.modelCode = 1});
    EXPECT_TRUE(tested.updater.update(243));
    for (const auto &[length, unfinished] : {std::pair(243, 0), {300, 100}}) {
        ASSERT_TRUE(tested.updater.handshake());
        ASSERT_EQ(tested.updater.ask(header(length)), kAck);
        tested.updater.send(DataFrame(QByteArray(250, 'x')).first(unfinished));
        EXPECT_EQ(tested.updater.ask(kSync), kAck) << "nothing follows it";
        EXPECT_EQ(tested.device.report().errorCount, unfinished > 0 ? 1 : 0);
    }
    EXPECT_EQ(tested.device.report().exchanges, 5);
}

TEST(Device, PacesTheLineInBothDirectionsAndHoldsEachAnswerBack)
{
    const TestedDevice tested({.modelCode = 1, .answerDelay = 5ms, .baud = 115200});
    // Sync byte, three commands, header, 4 frames, the last frame; 13 bytes in 10 answers.
    const int bytes = 1 + 12 + 10 + 4 * 252 + 2 + 13;
    const auto least = std::chrono::microseconds(bytes * 10'000'000LL / 115200) + 10 * 5ms;
    // A busy machine may slow down many an update, but not all.
    EXPECT_TRUE(eventually([&] {
        const auto begin = std::chrono::steady_clock::now();
        const bool succeeded = tested.updater.update(1000);
        const auto took = std::chrono::steady_clock::now() - begin;
        EXPECT_TRUE(succeeded && took >= least);
        return took <= least * 2;
    }));
}

Fault fault(const char *text)
{
    return parseFault(QLatin1String(text), nullptr).value();
}

// An update of 300 bytes, frame by frame, for as long as answers are expected.
TEST(DeviceFaults, ChangeTheAnswerToTheirStepAndNoOther)
{
    const QByteArray whole(250, 'x');
    const QByteArrayList frames{
        kSync,       CmdConnect(),     CmdQueryVersion(),         CmdDownload(),
        header(300), DataFrame(whole), DataFrame(whole.first(50))};
    // The answers in hexadecimal, "-" for none.
    for (const auto &[text, expected] : {std::pair("connect=silence", "af -"),
                                         {"erase=garbage", "af af000008 af af 55005a"},
                                         {"frame:2=silence", "af af000008 af af afaf af -"},
                                         {"last=refuse", "af af000008 af af afaf af fc"},
                                         {"version=noise", "af af000008 55005aaf af afaf af af"},
                                         {"sync=duplicate", "afaf af000008 af af afaf af af"},
                                         {"header=late:80", "af af000008 af af afaf af af"},
                                         {"last=late:80", "af af000008 af af afaf af af"}}) {
        SCOPED_TRACE(text);
        const TestedDevice tested({.faults = {fault(text)}});
        const auto begin = std::chrono::steady_clock::now();
        const QByteArrayList answers = QByteArray(expected).split(' ');
        for (qsizetype i = 0; i < answers.size(); ++i) {
            const QByteArray answer = QByteArray::fromHex(answers[i]);
            EXPECT_EQ(tested.updater.ask(frames[i], answer.size()), answer);
        }
        const auto least = QByteArray(text).endsWith("late:80") ? 80ms : 0ms;
        EXPECT_GE(std::chrono::steady_clock::now() - begin, least);
        EXPECT_EQ(tested.updater.receiveChunk(60ms).toHex(), "") << "nothing more comes";
        EXPECT_EQ(tested.device.report().errors, QStringList());
        const bool isWhole = answers.size() == frames.size() && answers.back() == "af";
        EXPECT_EQ(tested.device.report().updates, isWhole ? 1 : 0);
    }
}

TEST(Device, IsUnpluggedAndComesBackOnANewTerminal)
{
    const QTemporaryDir directory;
    DeviceOptions options;
    options.faults = {fault("connect=unplug,times=1"), fault("sync=refuse,after=2,times=1")};
    options.directory = directory.path();
    options.name = "usbserial-1";
    options.replugAfter = 100ms;
    // What a simulator that was killed leaves.
    ASSERT_TRUE(QFile::link("/none", directory.filePath(options.name)));
    TestedDevice tested(options);
    const auto linked = [&] { return QFile::symLinkTarget(directory.filePath(options.name)); };
    EXPECT_EQ(tested.updater.ask(kSync), kAck);
    EXPECT_EQ(tested.updater.ask(CmdConnect()), "") << "the terminal hangs up";
    ASSERT_TRUE(eventually([&] { return tested.device.report().plugged; }));
    EXPECT_EQ(linked(), tested.device.slavePath());

    // What one program leaves unread is not for the next one.
    TestUpdater(tested.device.path()).send("AT\r" + kSync);
    ASSERT_TRUE(tested.device.waitForExchanges(2, 20s));
    ASSERT_TRUE(eventually([&] { return !tested.device.report().inUse; }));
    const TestUpdater next(tested.device.path());
    ASSERT_TRUE(eventually([&] { return tested.device.report().opens == 3; }));
    EXPECT_EQ(next.receiveChunk(60ms), "");
    EXPECT_EQ(next.ask(kSync), kNak);
    EXPECT_EQ(next.ask(kSync), kAck);
    tested.device.unplug();
    EXPECT_EQ(linked(), "");
    EXPECT_EQ(tested.device.report().errors,
              QStringList("3 bytes before a sync byte, the first one 41"));
}

// The transcript without its times.
QString exchangeIn(const QString &text)
{
    return text.mid(text.indexOf("0.000000 RTS high"))
        .remove(QRegularExpression("^\\S+ ", QRegularExpression::MultilineOption));
}

TEST(Replay, EndsEveryUpdateAsTheRecordedOneEnded)
{
    for (const auto &[name, kind, step, frame] :
         {std::tuple("refused-in-the-data", UpdateFailureKind::Refused, UpdateStep::Data, 1),
          {"silent-at-the-erase", UpdateFailureKind::TimedOut, UpdateStep::Erase, 0},
          {"unplugged-in-the-data", UpdateFailureKind::PortClosed, UpdateStep::Data, 0}}) {
        SCOPED_TRACE(name);
        QFile file(QStringLiteral(VORN_TRANSCRIPTS "/%1.txt").arg(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QString recorded = QString::fromLatin1(file.readAll());
        BootParameters parameters = patientParameters();
        if (kind == UpdateFailureKind::TimedOut)
            parameters.eraseLimit = 200ms; // the recorded silence took 30 s
        SessionRig rig(with(&DeviceOptions::replay, recorded), parameters);
        rig.update(600);
        const UpdateResult result = rig.result();
        EXPECT_EQ(result.failure.kind, kind);
        EXPECT_EQ(result.step, step);
        EXPECT_EQ(result.frame, frame);
        EXPECT_EQ(exchangeIn(rig.session->transcript()->text()), exchangeIn(recorded));
        const auto [entries, replayed, differences] = rig.device.report().replay;
        EXPECT_EQ(replayed, entries);
        EXPECT_EQ(differences, 0);
    }
}

TEST(Device, CutsTheConnectAnswerIntoPiecesAndJoinsThoseAroundTheErase)
{
    SessionRig rig({.connectPieces = {1, 2}, .joinEraseAnswers = true});
    rig.update(600);
    rig.expectUpdated();
    const QString exchange = exchangeIn(rig.session->transcript()->text());
    EXPECT_TRUE(exchange.contains("FC\n< AF\n< 00 00\n< 08\n> 03")) << qPrintable(exchange);
    EXPECT_TRUE(exchange.contains("\n< AF AF\n> FB")) << qPrintable(exchange);
}

} // namespace
} // namespace vorn::test
