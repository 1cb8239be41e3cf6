#include "platform/FileDescriptor.h"
#include "tests/cli/CliTest.h"
#include "tests/support/TestTerminal.h"

#include <QRegularExpression>

#include <fcntl.h>
#include <sys/ioctl.h>

#include <array>

namespace vorn {
namespace {

struct OutputTest : CliTest
{
    // A pipe as standard output; returns the end to read from.
    FileDescriptor pipeOutput()
    {
        std::array<int, 2> ends{};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        pipe = FileDescriptor(ends[1]);
        program.setChildProcessModifier([fd = ends[1]] { ::dup2(fd, STDOUT_FILENO); });
        return FileDescriptor(ends[0]);
    }
    FileDescriptor pipe;
};

TEST_F(OutputTest, LostOutputHasAnExitCodeAndAReaderThatLeavesIsNoFailure)
{
    const SimulatedDevice &device = addDevice("usbserial-A");
    program.setStandardOutputFile("/dev/full");
    for (const char *arguments :
         {"list", "--json list", "--help", "list --help", "update --newest"}) {
        EXPECT_EQ(run(arguments), 11) << arguments;
        EXPECT_EQ(err, "The output cannot be written: No space left on device.\n");
    }
    EXPECT_EQ(run("--json info nobody"), 3);

    program.setStandardOutputFile({});
    pipeOutput();
    EXPECT_EQ(run("update --newest"), 0);
    EXPECT_EQ(err, "");
    EXPECT_EQ(device.report().updates, 2);
}

TEST_F(OutputTest, CtrlCEndsAListThatNobodyReads)
{
    for (int i = 0; i < 200; ++i)
        writeFile(firmware(QString("%1.bin").arg(i)), "x");
    const FileDescriptor reader = pipeOutput();
    constexpr int kPage = 4096;
    ASSERT_EQ(::fcntl(reader.get(), F_SETPIPE_SZ, kPage), kPage);
    ASSERT_NO_FATAL_FAILURE(start("firmware"));
    const auto room = [&] {
        int waiting = 0;
        return ::ioctl(reader.get(), FIONREAD, &waiting) == 0 ? kPage - waiting : kPage;
    };
    ASSERT_TRUE(eventually([&] { return room() < firmware("100.bin").size() + 1; }));
    pressCtrlC();
    ASSERT_TRUE(eventually([&] { return program.state() == QProcess::NotRunning; }));
    EXPECT_EQ(program.exitStatus(), QProcess::CrashExit);
}

TEST_F(OutputTest, ATerminalShowsABarForEachDeviceAndARetryBeginsAtZero)
{
    addDevice("usbserial-A", "frame:120=refuse,times=1 erase=late:300", 1'000'000);
    addDevice("usbserial-B", "erase=late:300", 1'000'000);
    const TestTerminal terminal;
    program.setStandardOutputFile(terminal.path());
    ASSERT_NO_FATAL_FAILURE(start("update --newest --all --retries 1"));
    QString shown;
    ASSERT_TRUE(eventually([&] {
        shown += terminal.take();
        return program.state() == QProcess::NotRunning;
    }));
    EXPECT_EQ(finish(), 0) << err.constData();
    shown += terminal.take();
    const auto shows = [&](const char *text) { return shown.contains(QRegularExpression(text)); };
    EXPECT_TRUE(
        shows("\\[2A\\r\\e\\[J *\\d+ % usbserial-A \\[[#-]{24}\\] .*\r?\n *\\d+ % usbserial-B"));
    EXPECT_TRUE(shows("[1-9]\\d % usbserial-A"));
    EXPECT_TRUE(shows(" 0 % usbserial-A \\[-+\\] Erase")) << qPrintable(shown);
    EXPECT_FALSE(shows("[1-9]\\d? % usbserial-A \\[[#-]+\\] Erase")) << qPrintable(shown);
    EXPECT_TRUE(shown.trimmed().endsWith(" s")) << qPrintable(shown);
}

TEST_F(OutputTest, AKilledStationLeavesWholeLinesAndTheNextOneGoesOn)
{
    constexpr int kStarts = 3;
    const QString record = home.filePath("record");
    writeFile(record, "{\"half a");
    addDevice("usbserial-A");
    for (int i = 0; i < kStarts; ++i) {
        out.clear();
        ASSERT_NO_FATAL_FAILURE(start("--json watch --newest --record " + record));
        ASSERT_TRUE(waitForOutput("\"event\":\"result\""));
        program.kill();
        ASSERT_TRUE(program.waitForFinished());
    }
    QByteArray lines = readFile(record);
    ASSERT_TRUE(lines.startsWith("{\"half a\n") && lines.endsWith('\n'));
    const QList<QJsonObject> objects = objectsIn(lines.mid(lines.indexOf('\n') + 1));
    ASSERT_EQ(objects.size(), kStarts);
    for (const QJsonObject &object : objects)
        EXPECT_EQ(object["result"], "ok");
}

} // namespace
} // namespace vorn
