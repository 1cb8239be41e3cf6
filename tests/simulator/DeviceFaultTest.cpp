#include "simulator/SimulatedDevice.h"
#include "tests/simulator/TestUpdater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace vorn::test {
namespace {

constexpr auto Quiet = 60ms; // longer than any answer of these devices takes

DeviceOptions with(const char *fault, int modelCode = 8)
{
    DeviceOptions options;
    options.modelCode = modelCode;
    QString problem;
    const std::optional<Fault> parsed = parseFault(QLatin1String(fault), &problem);
    EXPECT_TRUE(parsed) << problem.toStdString();
    if (parsed)
        options.faults.push_back(*parsed);
    return options;
}

// Sends an update of 300 bytes, frame by frame, for as long as answers (in hexadecimal) are
// expected.
void expectAnswers(const DeviceOptions &options, const std::vector<const char *> &expected)
{
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    const QByteArray image = sampleImage(300);
    const std::vector<QByteArray> frames{Sync,
                                         Connect,
                                         Version,
                                         Download,
                                         header(300),
                                         frame(image.first(250)),
                                         frame(image.mid(250))};
    ASSERT_LE(expected.size(), frames.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const QByteArray answer = QByteArray::fromHex(expected[i]);
        EXPECT_EQ(updater.ask(frames[i], answer.size()).toHex(), expected[i]);
    }
    EXPECT_EQ(updater.receive(1, Quiet).toHex(), "") << "nothing more comes";
    EXPECT_EQ(device.report().errors, QStringList());
    const bool whole = expected.size() == frames.size() && expected.back() == Ack.toHex();
    EXPECT_EQ(device.report().updates, whole ? 1 : 0);
}

TEST(DeviceFaults, TakeThePlaceOfTheAnswerToTheirStep)
{
    struct Case
    {
        const char *fault;
        std::vector<const char *> answers;
        int modelCode = 8;
    };
    const char *model = "af000008";
    const std::vector<Case> cases{
        {"sync=refuse", {"fc"}},
        {"connect=silence", {"af", ""}},
        {"connect=garbage", {"af", "55005a"}},
        {"version=refuse", {"af", model, "fc"}},
        {"download=refuse", {"af", model, "af", "fc"}},
        {"header=refuse", {"af", model, "af", "af", "fc"}},
        {"header=silence", {"af", model, "af", "af", ""}},
        {"erase=refuse", {"af", model, "af", "af", "fc"}},
        {"erase=garbage", {"af", model, "af", "af", "55005a"}},
        {"ready=refuse", {"af", model, "af", "af", "affc"}},
        {"ready=silence", {"af", model, "af", "af", "af"}},
        {"ready=refuse", {"af", "af000001", "af", "af", "fc"}, 1},
        {"frame:1=refuse", {"af", model, "af", "af", "afaf", "fc"}},
        {"frame:1=garbage", {"af", model, "af", "af", "afaf", "55005a"}},
        {"frame:2=silence", {"af", model, "af", "af", "afaf", "af", ""}},
        {"last=refuse", {"af", model, "af", "af", "afaf", "af", "fc"}},
        {"frame:9=refuse", {"af", model, "af", "af", "afaf", "af", "af"}}, // never reached
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.fault);
        expectAnswers(with(c.fault, c.modelCode), c.answers);
    }
}

TEST(DeviceFaults, ThatDoNotEndTheExchangeAddToTheRightAnswer)
{
    const char *model = "af000008";
    expectAnswers(with("version=noise"), {"af", model, "55005aaf", "af", "afaf", "af", "af"});
    expectAnswers(with("sync=duplicate"), {"afaf", model, "af", "af", "afaf", "af", "af"});
    for (const char *fault : {"header=late:80", "frame:1=late:80", "last=late:80"}) {
        SCOPED_TRACE(fault);
        const auto begin = std::chrono::steady_clock::now();
        expectAnswers(with(fault), {"af", model, "af", "af", "afaf", "af", "af"});
        EXPECT_GE(std::chrono::steady_clock::now() - begin, 80ms + Quiet / 2);
    }
}

TEST(DeviceFaults, StrikeAfterSoManyTimesAndSoOften)
{
    SimulatedDevice device(with("sync=refuse,after=1,times=2"));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    for (const QByteArray &answer : {Ack, Nak, Nak, Ack, Ack})
        EXPECT_EQ(updater.ask(Sync), answer);
    device.setFaults(with("sync=refuse").faults);
    EXPECT_EQ(updater.ask(Sync), Nak);
    device.setFaults({});
    EXPECT_EQ(updater.ask(Sync), Ack);
}

TEST(DeviceFaults, CutTheConnectAnswerIntoPieces)
{
    DeviceOptions options;
    options.connectPieces = {1, 2};
    options.pieceGap = 200ms;
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_EQ(updater.ask(Sync), Ack);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(updater.ask(Connect), Ack);
    EXPECT_EQ(updater.receive(2), QByteArray(2, '\0'));
    EXPECT_EQ(updater.receive(1), QByteArray(1, 8));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 400ms);
    EXPECT_EQ(updater.ask(Version), Ack);
    EXPECT_EQ(device.report().errorCount, 0);
}

TEST(DeviceFaults, JoinTheAnswersAroundTheEraseInOneChunk)
{
    DeviceOptions options;
    options.joinEraseAnswers = true;
    options.answerDelay = 30ms; // apart, the second one would come that much later
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.handshake());
    updater.send(header(10));
    pollfd fd{updater.descriptor(), POLLIN, 0};
    ASSERT_EQ(::poll(&fd, 1, 5000), 1);
    std::array<char, 8> chunk{};
    EXPECT_EQ(::read(updater.descriptor(), chunk.data(), chunk.size()), 2);
}

TEST(DeviceFaults, EndASilentDownloadWithoutAnUpdate)
{
    SimulatedDevice device(with("last=silence"));
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    ASSERT_TRUE(updater.handshake());
    ASSERT_EQ(updater.ask(header(10), 2), Ack.repeated(2));
    updater.send(frame(QByteArray(10, 'x')));
    ASSERT_TRUE(device.waitForFrame(1, 5s));
    EXPECT_FALSE(device.waitForUpdates(1, Quiet));
    EXPECT_EQ(device.report().partialImage, QByteArray(10, 'x'));
}

TEST(FaultNotation, IsReadWhole)
{
    QString problem;
    const std::optional<Fault> fault =
        parseFault(QStringLiteral("frame:12=late:1500,after=2,times=3"), &problem);
    ASSERT_TRUE(fault) << problem.toStdString();
    EXPECT_EQ(fault->step, BootStep::Frame);
    EXPECT_EQ(fault->frame, 12);
    EXPECT_EQ(fault->kind, FaultKind::Late);
    EXPECT_EQ(fault->delay, 1500ms);
    EXPECT_EQ(fault->after, 2);
    EXPECT_EQ(fault->times, 3);
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
