#include "simulator/SampleFirmware.h"
#include "tests/simulator/TestUpdater.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vorn::test {
namespace {

constexpr int LimitMs = 20'000;

// The program itself, run with arguments.
class Vornsim : public QProcess
{
public:
    explicit Vornsim(const QStringList &arguments)
    {
        start(QStringLiteral(VORNSIM_PATH), arguments);
        EXPECT_TRUE(waitForStarted(LimitMs));
    }

    // The next line of JSON on its standard output; empty when it ends without one.
    QJsonObject nextEvent()
    {
        while (!canReadLine() && waitForReadyRead(LimitMs)) {
        }
        return QJsonDocument::fromJson(readLine()).object();
    }

    int endedWith()
    {
        EXPECT_TRUE(waitForFinished(LimitMs));
        EXPECT_EQ(exitStatus(), NormalExit);
        return exitCode();
    }
};

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(Program, RunsADeviceUntilItsUpdatesAreDone)
{
    const QTemporaryDir directory;
    const QString image = directory.filePath("image");
    const QString report = directory.filePath("report");
    Vornsim program({"device", "--dir", directory.path(), "--name", "usbserial-1", "--model", "1",
                     "--fault", "last=noise", "--exit-after", "1", "--image", image, "--report",
                     report});
    const QJsonObject ready = program.nextEvent();
    ASSERT_EQ(ready.value("event"), "ready");
    const TestUpdater updater(ready.value("path").toString());
    ASSERT_TRUE(updater.handshake());
    ASSERT_EQ(updater.ask(header(3)), Ack);
    EXPECT_EQ(updater.ask(frame("abc"), 4).toHex(), "55005aaf");

    const QJsonObject end = program.nextEvent();
    EXPECT_EQ(end.value("event"), "report");
    EXPECT_EQ(end.value("updates"), 1);
    EXPECT_EQ(end.value("errorCount"), 0);
    EXPECT_EQ(program.endedWith(), 0);
    EXPECT_EQ(contentOf(image), "abc");
    EXPECT_EQ(QJsonDocument::fromJson(contentOf(report)).object().value("model"), 1);
    EXPECT_FALSE(QFileInfo(directory.filePath("usbserial-1")).isSymLink());
}

TEST(Program, SaysWhereItsPackageServerIsAndReportsWhenItIsTerminated)
{
    const QTemporaryDir directory;
    const QString authority = directory.filePath("ca.pem");
    Vornsim program({"package-server", "--ca-file", authority, "--silence", "request"});
    const QJsonObject ready = program.nextEvent();
    EXPECT_THAT(ready.value("host").toString().toStdString(), testing::StartsWith("127.0.0.1:"));
    EXPECT_EQ(ready.value("ca").toString(), authority);
    EXPECT_TRUE(contentOf(authority).startsWith("-----BEGIN CERTIFICATE-----"));
    program.terminate();
    EXPECT_EQ(program.nextEvent().value("event"), "report");
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
    struct Mistake
    {
        const char *arguments;
        const char *complaint;
        int status = 2;
    };
    for (const Mistake &m :
         {Mistake{"", "a command is needed"}, Mistake{"devise", "\"devise\" is no command"},
          Mistake{"device --modle 3", "modle"}, Mistake{"device --model", "--model"},
          Mistake{"device --model 256", "between 0 and 255"},
          Mistake{"device --erase-ms -1", "\"-1\" is no natural number"},
          Mistake{"device --baud 99999999999", "99999999999 is too much"},
          Mistake{"device --fault connect=nothing", "the kinds are silence, refuse"},
          Mistake{"device --split 1,x", "four bytes"},
          Mistake{"device --dir /tmp", "belong together"},
          Mistake{"device now", "0 arguments are needed, not 1"},
          Mistake{"package-server --package /none", "/none: No such file"},
          Mistake{"package-server --framing odd",
                  "\"odd\" is none of length, chunked, until-close"},
          Mistake{"package-server --truncate-at 1 --cut-at 2", "either truncated or cut"},
          Mistake{"package-server --port 65536", "below 65536"},
          Mistake{"device --dir /none --name usbserial-1", "/none/usbserial-1: No such file", 1}}) {
        SCOPED_TRACE(m.arguments);
        Vornsim program(QString::fromLatin1(m.arguments).split(u' ', Qt::SkipEmptyParts));
        EXPECT_EQ(program.endedWith(), m.status);
        EXPECT_THAT(program.readAllStandardError().toStdString(), testing::HasSubstr(m.complaint));
        EXPECT_EQ(program.readAllStandardOutput(), "");
    }
}

} // namespace
} // namespace vorn::test
