#include "tests/simulator/TestUpdater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorn::test {
namespace {

constexpr auto Quiet = 60ms; // longer than any answer of these devices takes

DeviceOptions with(const char *fault)
{
    DeviceOptions options;
    QString problem;
    options.faults = {parseFault(QLatin1String(fault), &problem).value()};
    return options;
}

// An update of 300 bytes, frame by frame, for as long as answers are expected.
TEST(DeviceFaults, ChangeTheAnswerToTheirStepAndNoOther)
{
    const QByteArrayList frames{Sync,
                                Connect,
                                Version,
                                Download,
                                header(300),
                                frame(QByteArray(250, 'x')),
                                frame(QByteArray(50, 'x'))};
    // The answers in hexadecimal, "-" for none.
    for (const auto &[fault, expected] :
         {std::pair("connect=silence", "af -"),
          {"erase=garbage", "af af000008 af af 55005a"},
          {"frame:2=silence", "af af000008 af af afaf af -"},
          {"last=refuse", "af af000008 af af afaf af fc"},
          {"frame:9=refuse", "af af000008 af af afaf af af"}, // never reached
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
        if (QByteArray(fault).endsWith("late:80")) {
            EXPECT_GE(std::chrono::steady_clock::now() - begin, 80ms);
        }
        EXPECT_EQ(tested.updater.receive(1, Quiet).toHex(), "") << "nothing more comes";
        EXPECT_EQ(tested.device.report().errors, QStringList());
        const bool whole = answers.size() == frames.size() && answers.back() == "af";
        EXPECT_EQ(tested.device.report().updates, whole ? 1 : 0);
    }
}

TEST(DeviceFaults, StrikeAfterSoManyTimesAndSoOften)
{
    TestedDevice tested(with("sync=refuse,after=1,times=2"));
    for (const QByteArray &answer : {Ack, Nak, Nak, Ack, Ack})
        EXPECT_EQ(tested.updater.ask(Sync), answer);
    tested.device.setFaults({});
    EXPECT_EQ(tested.updater.ask(Sync), Ack);
}

TEST(DeviceFaults, CutTheConnectAnswerIntoPiecesAndJoinThoseAroundTheErase)
{
    DeviceOptions options;
    options.connectPieces = {1, 2};
    options.pieceGap = 200ms;
    options.joinEraseAnswers = true;
    options.answerDelay = 30ms; // apart, the second answer would come that much later
    const TestedDevice tested(options);
    ASSERT_EQ(tested.updater.ask(Sync), Ack);
    const auto begin = std::chrono::steady_clock::now();
    tested.updater.send(Connect);
    for (const QByteArray &piece : {Ack, QByteArray(2, '\0'), QByteArray(1, 8)})
        EXPECT_EQ(tested.updater.receiveChunk(), piece);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 400ms);
    EXPECT_EQ(tested.updater.ask(Version), Ack);
    EXPECT_EQ(tested.updater.ask(Download), Ack);
    tested.updater.send(header(10));
    EXPECT_EQ(tested.updater.receiveChunk(), Ack.repeated(2));
    EXPECT_EQ(tested.device.report().errorCount, 0);
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
