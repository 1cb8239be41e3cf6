#include "simulator/SampleFirmware.h"
#include "tests/support/QtPrinting.h"
#include "tests/ziparchive/Tree.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace vorn {
namespace {

constexpr int kLimitMs = 20'000;

// The program itself, run with arguments.
class Vornsim : public QProcess
{
public:
    explicit Vornsim(const QStringList &arguments)
    {
        start(QStringLiteral(VORNSIM_PATH), arguments);
        EXPECT_TRUE(waitForStarted(kLimitMs));
    }

    // The next line of JSON on its standard output, of that event.
    QJsonObject next(const char *event)
    {
        while (!canReadLine() && waitForReadyRead(kLimitMs)) {
        }
        QJsonObject object = QJsonDocument::fromJson(readLine()).object();
        EXPECT_EQ(object.value("event"), event);
        return object;
    }

    int endedWith()
    {
        EXPECT_TRUE(waitForFinished(kLimitMs));
        EXPECT_EQ(exitStatus(), NormalExit);
        return exitCode();
    }
};

const QString kImage = QStringLiteral(VORN_TRANSCRIPTS "/refused-in-the-data.txt");

TEST(Program, RunsADeviceUntilItsUpdatesAreDone)
{
    const QTemporaryDir directory;
    const QString image = directory.filePath("image");
    const QString report = directory.filePath("report");
    Vornsim program({"device", "--dir", directory.path(), "--name", "usbserial-1", "--model", "2",
                     "--erase-ms", "150", "--fault", "sync=duplicate", "--exit-after", "1",
                     "--image", image, "--report", report});
    EXPECT_EQ(program.next("ready").value("path"), directory.filePath("usbserial-1"));
    EXPECT_EQ(QProcess::execute(VORNUPDATER_CLI,
                                {"--device-dir", directory.path(), "update", "--firmware", kImage}),
              0);
    const QJsonObject end = program.next("report");
    EXPECT_EQ(end.value("updates"), 1);
    EXPECT_EQ(end.value("errorCount"), 0);
    EXPECT_GE(end.value("download").toObject().value("dataReleasedAfterMs").toDouble(), 150);
    EXPECT_EQ(program.endedWith(), 0);
    EXPECT_EQ(readFile(image), readFile(kImage));
    EXPECT_EQ(QJsonDocument::fromJson(readFile(report)).object().value("model"), 2);
    EXPECT_EQ(QFile::symLinkTarget(directory.filePath("usbserial-1")), "");
}

TEST(Program, ReportsTheDifferencesFromTheLogThatItReplays)
{
    const QTemporaryDir directory;
    Vornsim program(
        {"device", "--dir", directory.path(), "--name", "usbserial-1", "--replay", kImage});
    program.next("ready");
    EXPECT_EQ(QProcess::execute(VORNUPDATER_CLI,
                                {"--device-dir", directory.path(), "update", "--firmware", kImage}),
              6);
    program.terminate();
    EXPECT_EQ(
        program.next("report").value("replay").toObject(),
        QJsonObject({{"entries", 14}, {"replayed", 14}, {"complete", true}, {"differences", 3}}));
    EXPECT_EQ(program.endedWith(), 0);
}

TEST(Program, ServesAPackageAsAskedForAndReportsWhatItServed)
{
    const QTemporaryDir directory;
    const QString authority = directory.filePath("ca.pem");
    Vornsim program({"package-server", "--ca-file", authority, "--declared-length", "1099511627776",
                     "--cut-at", "5000", "--garbage-headers", "--header", "X-Mine: 1"});
    const QJsonObject ready = program.next("ready");
    EXPECT_EQ(ready.value("ca").toString(), authority);
    EXPECT_TRUE(readFile(authority).startsWith("-----BEGIN CERTIFICATE-----"));

    // Over the port without TLS; package downloads are tested over the other one.
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", static_cast<quint16>(ready.value("plainPort").toInt()));
    socket.write("GET /software/VornUpdate2.zip HTTP/1.1\r\nHost: here\r\n\r\n");
    QByteArray got;
    while (socket.waitForReadyRead(kLimitMs))
        got += socket.readAll();
    for (const char *line :
         {"Content-Length: 1099511627776", "X-Mine: 1", "this line has no colon"})
        EXPECT_TRUE(got.contains(QByteArray(line) + "\r\n")) << line;
    EXPECT_EQ(got.mid(got.lastIndexOf("\r\n\r\n") + 4), samplePackage().first(5000));

    program.terminate();
    const QJsonArray requests = program.next("report").value("requests").toArray();
    ASSERT_EQ(requests.size(), 1);
    EXPECT_EQ(requests[0].toObject().value("bodyBytes"), 5000);
    EXPECT_EQ(program.endedWith(), 0);
}

TEST(Program, WritesSamplesAndAPackageThatAnotherToolReads)
{
    const QTemporaryDir directory;
    const QString folder = directory.filePath("firmware");
    EXPECT_EQ(Vornsim({"sample-firmware", folder}).endedWith(), 0);
    EXPECT_EQ(QDir(folder).entryList(QDir::Files).size(),
              static_cast<qsizetype>(sampleFirmware(SampleRelease::Installed).size()));
    const QString package = directory.filePath("package.zip");
    EXPECT_EQ(Vornsim({"sample-package", package}).endedWith(), 0);
    EXPECT_EQ(QProcess::execute("unzip", {"-tqq", package}), 0);
}

TEST(Program, ExplainsEachMistakeAndEndsWithItsStatus)
{
    for (const auto &[arguments, complaint, status] :
         {std::tuple("", "a command is needed", 2),
          {"devise", "\"devise\" is not a command", 2},
          {"device --model 256", "\"256\" is not a number from 0 to 255", 2},
          {"device --fault connect=refuse,often=1", "the form is STEP=KIND", 2},
          {"device --fault connect=nothing", "the kinds are silence, refuse", 2},
          {"device --fault erase=silence --model 1", "only model codes from 2 on", 2},
          {"device --dir /tmp", "belong together", 2},
          {"device --replay /dev/null --model 3", "--model contradicts --replay", 2},
          {"device --replay /dev/null", "/dev/null: there is no transcript", 2},
          {"package-server --truncate-at 1 --cut-at 2", "either truncated or cut", 2},
          {"device --dir /none --name usbserial-1", "/none/usbserial-1: No such file", 1}}) {
        SCOPED_TRACE(arguments);
        Vornsim program(QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts));
        EXPECT_EQ(program.endedWith(), status);
        EXPECT_THAT(program.readAllStandardError().toStdString(), testing::HasSubstr(complaint));
        EXPECT_EQ(program.readAllStandardOutput(), "");
    }
}

} // namespace
} // namespace vorn
