#include "platform/DeviceNode.h"

#include "tests/support/TestTerminal.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <sys/syscall.h>

#include <thread>

namespace vorn {
namespace {

TEST(DeviceNodeTest, TheFactsAreThoseOfTheFileSystem)
{
    const TestTerminal terminal;
    for (const QString &path : {terminal.path(), QString("/dev/null")}) {
        QProcess stat;
        stat.start("stat", {"-c", "%G %a", path});
        ASSERT_TRUE(stat.waitForFinished());
        const DeviceNodeFacts facts = deviceNodeFacts(path);
        EXPECT_EQ(facts.group + ' ' + QString::number(facts.mode, 8) + '\n', stat.readAll());
        EXPECT_TRUE(facts.exists && facts.isAccessible);
    }
    const QByteArray node = terminal.path().toLocal8Bit();
    EXPECT_EQ(::chmod(node.constData(), 0400), 0);
    const bool isNumbered = ::chown(node.constData(), 65534, 54321) == 0; // as root only
    DeviceNodeFacts facts;
    std::thread([&] {
        ::syscall(SYS_setresuid, 65534, 65534, 65534); // of this thread alone; root may all
        facts = deviceNodeFacts(terminal.path());
    }).join();
    EXPECT_TRUE(facts.exists && !facts.isAccessible) << "readable is not enough";
    EXPECT_TRUE(!isNumbered || facts.group == "54321") << qPrintable(facts.group);
    EXPECT_FALSE(deviceNodeFacts("/dev/none").exists || deviceNodeFacts("/dev/none").isAccessible);
}

TEST(DeviceNodeTest, OtherProcessesThatHoldTheNodeAreFoundUnderWhateverPathTheyOpenedIt)
{
    const QTemporaryDir directory;
    const TestTerminal terminal;
    const TestTerminal unused;
    const QString link = directory.filePath("link");
    const QString program = directory.filePath("bad\nna\x1bme");
    ASSERT_TRUE(QFile::link(terminal.path(), link) && QFile::copy("/bin/sleep", program));
    QFile own(terminal.path());
    ASSERT_TRUE(own.open(QIODevice::ReadWrite));
    EXPECT_FALSE(isProgramRunning("bad_na_me"));
    QProcess holder;
    holder.setStandardInputFile(terminal.path());
    holder.setStandardOutputFile(terminal.path()); // twice, and yet one holder
    holder.start(program, {"60"});
    ASSERT_TRUE(holder.waitForStarted());

    const QList<NodeHolder> holders = holdersOf(link);
    ASSERT_EQ(holders.size(), 1);
    EXPECT_EQ(holders.first().program, "bad_na_me");
    EXPECT_EQ(holders.first().pid, holder.processId());
    EXPECT_TRUE(isProgramRunning("bad_na_me"));
    EXPECT_TRUE(holdersOf(unused.path()).isEmpty());
    EXPECT_TRUE(holdersOf(directory.filePath("none")).isEmpty());

    QProcess others; // that end while /proc is read
    others.start("sh", {"-c", "for i in $(seq 300); do /bin/true & done; wait"});
    ASSERT_TRUE(others.waitForStarted());
    for (; others.state() != QProcess::NotRunning; others.waitForFinished(0))
        EXPECT_EQ(holdersOf(link).size(), 1);
    holder.kill();
    EXPECT_TRUE(holder.waitForFinished());
    EXPECT_TRUE(holdersOf(link).isEmpty());
}

} // namespace
} // namespace vorn
