#include "tests/update/SessionRig.h"
#include "update/Frames.h"

#include <QRegularExpression>

#include <gmock/gmock.h>

namespace vorn {
namespace {

const QByteArray kSync = QByteArray::fromHex("f4");

QByteArray header(qsizetype length)
{
    return DownloadHeader(0x08001800, static_cast<quint32>(length));
}

TEST(BootLoader, RefusesAndNamesEachOffence)
{
    const QByteArray whole(250, 'x');
    QByteArray badSum = DataFrame(whole);
    badSum.back() = static_cast<char>(badSum.back() + 1);
    // Behind the download command: what is accepted, and what is not and why.
    for (const auto &[good, bad, error] :
         {std::tuple(header(500), badSum, "checksum"),
          {kSync, CmdQueryVersion(), "the command 02 FD where the connect command was due"},
          {{}, CmdQueryVersion(), "count 3 where the download header with the count 9"},
          {{}, DownloadHeader(0x08000000, 10), "load address 08000000"},
          {{}, header(0), "image of 0 bytes"},
          {{}, header(1001), "image of 1001 bytes for a flash of 1000"},
          {header(500), DataFrame(whole.first(249)), "count 251 was due"},
          {header(10), DataFrame(whole.first(11)), "count 11 was due"},
          {header(10), QByteArray(1, '\0'), "count 0"}}) {
        SCOPED_TRACE(error);
        BootLoader loader(1000);
        BootEvent last;
        for (const QByteArray &frame :
             {kSync, CmdConnect(), CmdQueryVersion(), CmdDownload(), good, bad}) {
            if (frame.isEmpty())
                continue;
            EXPECT_EQ(last.verdict, BootEvent::Verdict::Accepted);
            EXPECT_EQ(last.error, QString());
            loader.release();
            last = loader
                       .take({reinterpret_cast<const std::uint8_t *>(frame.data()),
                              static_cast<std::size_t>(frame.size())})
                       .event.value();
        }
        EXPECT_EQ(last.verdict, BootEvent::Verdict::Refused);
        EXPECT_THAT(last.error.toStdString(), testing::HasSubstr(error));
    }
}

TEST(Device, BeginsAgainBehindAnUnfinishedFrameAndNotesOneThatComesTooEarly)
{
    SessionRig rig({.eraseTime = 1s});
    const ORSSerialPortPtr port = rig.session->port();
    port->sendData(CmdConnect().first(1) + kSync);
    ASSERT_TRUE(rig.device.waitForExchanges(2, 20s));
    for (const QByteArray &frame : {CmdConnect(), CmdQueryVersion(), CmdDownload(),
                                    header(10) + DataFrame(QByteArray(10, 'x'))}) {
        const auto frames = rig.device.report().frames;
        port->sendData(frame);
        ASSERT_TRUE(eventually([&] { return rig.device.report().frames > frames; }));
    }
    ASSERT_TRUE(eventually([&] { return rig.device.report().updates == 1; }));
    EXPECT_EQ(rig.device.report().errors,
              QStringList({"a frame with the count 3 stopped after 2 bytes, where the download "
                           "command was due",
                           "a data frame came before it was released"}));
}

TEST(Device, PacesTheLineInBothDirectionsAndHoldsEachAnswerBack)
{
    SessionRig rig({.modelCode = 1, .answerDelay = 5ms, .baud = 115200});
    // Sync byte, three commands, header, 4 frames, the last frame; 13 bytes in 10 answers.
    const int bytes = 1 + 12 + 10 + 4 * 252 + 2 + 13;
    const auto least = std::chrono::microseconds(bytes * 10'000'000LL / 115200) + 10 * 5ms;
    // A busy machine may slow down many an update, but not all.
    EXPECT_TRUE(eventually([&] {
        rig.update(1000);
        const UpdateResult result = rig.result(rig.results.size() + 1);
        EXPECT_TRUE(result.succeeded() && result.elapsed >= least);
        return result.elapsed <= least * 2;
    }));
}

// What was exchanged, without the times.
QString exchangeIn(const QString &transcript)
{
    return transcript.mid(transcript.indexOf("0.000000 RTS high"))
        .remove(QRegularExpression("^\\S+ ", QRegularExpression::MultilineOption));
}

TEST(Device, ItsFaultsChangeTheAnswerToTheirStepAndNoOther)
{
    BootParameters parameters = patientParameters();
    parameters.answerLimit = parameters.eraseLimit = 1s;
    // All answers to an update of 300 bytes.
    for (const auto &[text, expected] : {std::pair("erase=garbage", "AFAF000008AFAF55005A"),
                                         {"frame:2=silence", "AFAF000008AFAFAFAFAF"},
                                         {"last=refuse", "AFAF000008AFAFAFAFAFFC"},
                                         {"version=noise", "AFAF00000855005AAFAFAFAFAFAF"},
                                         {"sync=duplicate", "AFAFAF000008AFAFAFAFAFAF"},
                                         {"header=late:80", "AFAF000008AFAFAFAFAFAF"}}) {
        SCOPED_TRACE(text);
        SessionRig rig({}, parameters);
        rig.device.setFaults({parseFault(QLatin1String(text), nullptr).value()});
        rig.update(300);
        EXPECT_GE(rig.result().elapsed, QByteArray(text).endsWith("late:80") ? 80ms : 0ms);
        EXPECT_EQ(exchangeIn(rig.session->transcript()->text())
                      .split(u'\n')
                      .filter(u"<")
                      .join(QString())
                      .remove(QRegularExpression("[< ]")),
                  expected);
        EXPECT_EQ(rig.device.report().errors, QStringList());
        EXPECT_EQ(rig.device.report().updates, rig.result().succeeded() ? 1 : 0);
    }
}

TEST(Device, CutsTheConnectAnswerIntoPiecesAndJoinsThoseAroundTheErase)
{
    SessionRig rig({.connectPieces = {1, 2}, .joinEraseAnswers = true});
    QString exchange;
    // On a busy machine pieces may be read at once, but not in every update.
    EXPECT_TRUE(eventually([&] {
        rig.update(600);
        rig.expectUpdated(rig.results.size() + 1);
        exchange = exchangeIn(rig.session->transcript()->text());
        return exchange.contains("FC\n< AF\n< 00 00\n< 08\n> 03");
    })) << qPrintable(exchange);
    EXPECT_TRUE(exchange.contains("\n< AF AF\n> FB")) << qPrintable(exchange);
}

TEST(Device, IsUnpluggedAndComesBackByItselfOnANewTerminal)
{
    const QTemporaryDir directory;
    DeviceOptions options;
    options.faults = {parseFault("connect=unplug,after=1,times=1", nullptr).value()};
    options.directory = directory.path();
    options.name = "usbserial-1";
    options.replugAfter = 100ms;
    // What a simulator that was killed leaves.
    ASSERT_TRUE(QFile::link("/none", directory.filePath(options.name)));
    const auto linked = [&] { return QFile::symLinkTarget(directory.filePath(options.name)); };
    SessionRig rig(options);
    rig.update(300);
    EXPECT_EQ(rig.result().failure.kind, UpdateFailureKind::PortClosed);
    ASSERT_TRUE(eventually([&] { return rig.device.report().plugged; }));
    EXPECT_EQ(linked(), rig.device.slavePath());
    rig.open();
    rig.update(600);
    rig.expectUpdated(2);
    rig.device.unplug();
    EXPECT_EQ(linked(), "");
}

TEST(Replay, ReadsALineOfAnyLength)
{
    const QString bytes = QStringLiteral(" AF").repeated(100'000);
    EXPECT_EQ(
        Replay("0.0 no\n0.000000 > F4\n0.000001 <" + bytes + "\n1.000000 > F4\n").report().entries,
        3);
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
        SessionRig rig({.replay = recorded}, parameters);
        for (std::size_t number = 1; number <= 2 && rig.session->isOpen(); ++number) {
            rig.update(600);
            const UpdateResult result = rig.result(number);
            EXPECT_EQ(result.failure.kind, kind);
            EXPECT_EQ(result.step, step);
            EXPECT_EQ(result.frame, frame);
            EXPECT_GE(result.elapsed, 150ms) << "as long as was recorded";
            EXPECT_EQ(exchangeIn(rig.session->transcript()->text()), exchangeIn(recorded));
            const auto [entries, replayed, differences] = rig.device.report().replay;
            EXPECT_EQ(replayed, entries);
            EXPECT_EQ(differences, 0);
        }
    }
}

} // namespace
} // namespace vorn
