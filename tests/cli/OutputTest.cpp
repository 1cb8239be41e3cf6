// What the program writes, where, and what happens when nobody reads it.
#include "tests/cli/ProgramRig.h"

namespace vorn {
namespace {

TEST_F(CliTest, PipedTextHasNoControlCharacterAndARetryIsTold)
{
    addDevice("usbserial-A", "frame:5=refuse,times=1");
    EXPECT_EQ(run("update --newest --retries 1"), 0);
    EXPECT_FALSE(QString(out + err).contains(QRegularExpression("[^\\P{C}\\n]")))
        << out.constData();
    EXPECT_TRUE(out.contains("usbserial-A: 50 %\n")) << out.constData();
    EXPECT_TRUE(err.contains("1 of 1")) << err.constData();
    EXPECT_EQ(devices[0]->report().image, readFile(firmware("VORN_PLATINA-3.10.0.bin")));

    writeFile(firmware(QString("VORN_I-") + QChar(0x9b) + "31m\n.bin"), "x");
    for (const char *arguments : {"firmware", "--json firmware"}) {
        EXPECT_EQ(run(arguments), 0);
        EXPECT_FALSE(QString(out).contains(QRegularExpression("[^\\P{C}\\n]"))) << out.constData();
    }
    QFile::remove(firmware(QString("VORN_I-") + QChar(0x9b) + "31m\n.bin"));

    EXPECT_EQ(run("list"), 0);
    EXPECT_TRUE(out.contains("usbserial-A  " + devices[0]->path().toUtf8()));
    EXPECT_EQ(run("firmware --model 1"), 0);
    EXPECT_EQ(out, firmware("VORN_I-9.0.bin").toUtf8() + '\n');
}

TEST_F(CliTest, LostOutputHasAnExitCodeAndAReaderThatLeavesIsNoFailure)
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

TEST_F(CliTest, CtrlCEndsAListThatNobodyReads)
{
    for (int i = 0; i < 200; ++i)
        writeFile(firmware(QString("%1.bin").arg(i)), "x");
    const FileDescriptor reader = pipeOutput();
    constexpr int kPage = 4096;
    ASSERT_EQ(::fcntl(reader.get(), F_SETPIPE_SZ, kPage), kPage);
    ASSERT_NO_FATAL_FAILURE(start("firmware"));
    pollfd shown{reader.get(), POLLIN, 0};
    ASSERT_EQ(::poll(&shown, 1, 20'000), 1);
    pressCtrlC();
    ASSERT_TRUE(eventually([&] { return program.state() == QProcess::NotRunning; }));
    EXPECT_EQ(program.exitStatus(), QProcess::CrashExit);
}

TEST_F(CliTest, ATerminalShowsABarForEachDeviceAndARetryBeginsAtZero)
{
    // Slow enough for many pictures of each phase.
    addDevice("usbserial-A", "frame:120=refuse,times=1 erase=late:1000", 300'000);
    addDevice("usbserial-B", "erase=late:1000", 300'000);
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
        shows("\\[2A\\r\\e\\[J *\\d+ % usbserial-A \\[[#-]{24}\\] .*\r?\n *\\d+ % usbserial-B"))
        << qPrintable(shown);
    EXPECT_TRUE(shows("[1-9]\\d % usbserial-A"));
    EXPECT_TRUE(shows(" 0 % usbserial-A \\[-+\\] Erase")) << qPrintable(shown);
    EXPECT_FALSE(shows("[1-9]\\d? % usbserial-A \\[[#-]+\\] Erase")) << qPrintable(shown);
    EXPECT_TRUE(shown.trimmed().endsWith(" s")) << qPrintable(shown);
}

} // namespace
} // namespace vorn
