#include "firmware/PackageProblem.h"
#include "firmware/StagingFolder.h"
#include "tests/ziparchive/Tree.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>

using namespace vorn;

namespace {

// The program that installs a package, followed from one change of a file to the next.
class TracedInstall
{
public:
    TracedInstall(const QString &archive, const char *exchange)
    {
        const QByteArray path = archive.toUtf8();
        m_pid = ::fork();
        if (m_pid == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::execl(INSTALL_PACKAGE, INSTALL_PACKAGE, "VornUpdate2.zip", path.constData(), exchange,
                    nullptr);
            ::_exit(127);
        }
        wait();
        ::ptrace(PTRACE_SETOPTIONS, m_pid, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
        while (isRunning() && WSTOPSIG(m_status) != SIGSTOP)
            resume(PTRACE_CONT);
    }
    TracedInstall(const TracedInstall &) = delete;
    TracedInstall &operator=(const TracedInstall &) = delete;
    ~TracedInstall() { kill(); }

    // Goes on to before the next system call that changes or locks files, `count` times; false when
    // the program has ended instead.
    bool goToNextChange(int count = 1)
    {
        while (count > 0 && isRunning()) {
            resume(PTRACE_SYSCALL);
            if (isRunning() && isBeforeChange())
                --count;
        }
        return isRunning();
    }

    void kill()
    {
        if (isRunning()) {
            ::kill(m_pid, SIGKILL);
            wait();
        }
    }

    bool isRunning() const { return WIFSTOPPED(m_status); }
    bool hasSucceeded() const { return WIFEXITED(m_status) && WEXITSTATUS(m_status) == 0; }

private:
    bool isBeforeChange() const
    {
        static constexpr std::array<long, 19> changes = {
            SYS_flock,     SYS_mkdir,     SYS_mkdirat, SYS_write,     SYS_ftruncate,
            SYS_fallocate, SYS_fchmod,    SYS_fsync,   SYS_fdatasync, SYS_syncfs,
            SYS_link,      SYS_linkat,    SYS_rename,  SYS_unlink,    SYS_unlinkat,
            SYS_renameat,  SYS_renameat2, SYS_rmdir,   SYS_utimensat};
        if (WSTOPSIG(m_status) != (SIGTRAP | 0x80))
            return false;
        __ptrace_syscall_info info = {};
        ::ptrace(PTRACE_GET_SYSCALL_INFO, m_pid, sizeof info, &info);
        if (info.op != PTRACE_SYSCALL_INFO_ENTRY)
            return false;
        const auto call = static_cast<long>(info.entry.nr);
        if (call == SYS_openat)
            return (info.entry.args[2] & O_CREAT) != 0;
        return std::find(changes.begin(), changes.end(), call) != changes.end();
    }

    void resume(__ptrace_request how)
    {
        ::ptrace(how, m_pid, nullptr, nullptr);
        wait();
    }
    void wait() { ::waitpid(m_pid, &m_status, 0); }

    pid_t m_pid = -1;
    int m_status = 0;
};

class PackageKillTest : public testing::TestWithParam<const char *>
{
protected:
    PackageKillTest()
    {
        qputenv("XDG_CACHE_HOME", cache.toUtf8());
        qputenv("QT_LOGGING_RULES", "*=false");
        writeFile(archive, makeArchive({{"VornUpdate2/", {}},
                                        {"VornUpdate2/a.bin", "A"},
                                        {"VornUpdate2/sub/same.bin", "new"}}));
    }

    Tree tree() const { return treeAt(cache, "VornUpdate2.zip"); }

    // In memory where there is such a place: each of the many runs brings everything to the disk.
    const QTemporaryDir home{QDir("/dev/shm").exists() ? "/dev/shm/vorn-XXXXXX" : QString()};
    const QString cache = home.filePath("cache");
    const QString archive = home.filePath("archive.zip");
    const Tree oldTree = {{"VornUpdate2/old.bin", "old"}, {"VornUpdate2/sub/same.bin", "old"}};
    const Tree newTree = {{"VornUpdate2/a.bin", "A"}, {"VornUpdate2/sub/same.bin", "new"}};
    const int limit = 1000;
};

TEST_P(PackageKillTest, AProgramKilledBeforeAnyChangeOfItsFilesLeavesTheOldFirmwareOrTheNew)
{
    int oldSets = 0;
    int newSets = 0;
    for (int changes = 1; changes < limit; ++changes) {
        writeTree(cache, oldTree);
        TracedInstall install(archive, GetParam());
        ASSERT_TRUE(install.isRunning());
        const bool wasKilled = install.goToNextChange(changes);
        install.kill();
        StagingFolder::recoverInterruptedPublish();

        const Tree left = tree();
        ASSERT_TRUE(left == oldTree || left == newTree)
            << "killed before change " << changes << ": " << left.keys().join(' ').toStdString();
        ++(left == oldTree ? oldSets : newSets);
        if (!wasKilled) {
            EXPECT_TRUE(install.hasSucceeded());
            EXPECT_EQ(left, newTree);
            break;
        }
    }
    EXPECT_GT(oldSets, 20);
    EXPECT_GT(newSets, 2);
}

TEST_P(PackageKillTest, AnInstanceThatStartsAtAnyMomentDisturbsNothing)
{
    bool isRunning = true;
    for (int changes = 1; isRunning && changes < limit; ++changes) {
        writeTree(cache, oldTree);
        TracedInstall install(archive, GetParam());
        isRunning = install.goToNextChange(changes);
        StagingFolder::recoverInterruptedPublish(); // as the other instance does
        install.goToNextChange(limit);
        EXPECT_TRUE(install.hasSucceeded()) << "before change " << changes;
        EXPECT_EQ(tree(), newTree) << "before change " << changes;
    }
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutAnExchangeOfNames, PackageKillTest,
                         testing::Values("exchange", "no-exchange"));

TEST(PackageSpaceTest, AFullDiskLeavesTheOldFirmware)
{
    const QTemporaryDir home;
    const Tree newTree = {{"a.bin", QByteArray(100'000, 'A')}, {"b.bin", QByteArray(100'000, 'B')}};
    writeFile(home.filePath("archive.zip"), makeArchive({{"VornUpdate2/", {}},
                                                         {"VornUpdate2/a.bin", newTree["a.bin"]},
                                                         {"VornUpdate2/b.bin", newTree["b.bin"]}}));
    // A file system of the size $1, in a name space in which anybody may mount one.
    const QString script = home.filePath("script");
    writeFile(script, R"(set -e; cd "$2"; mkdir -p cache; mount -t tmpfs -o size=$1 tmpfs cache
mkdir cache/VornUpdate2; echo -n old >cache/VornUpdate2/old.bin
trap 'rm -rf result; cp -r cache/VornUpdate2 result' EXIT
XDG_CACHE_HOME="$2/cache" "$3" VornUpdate2.zip "$2/archive.zip")");

    int oldSets = 0;
    int newSets = 0;
    for (int size = 8'192; size < 400'000; size += 32'768) {
        QProcess process;
        process.start("unshare", {"--map-root-user", "--mount", "sh", script, QString::number(size),
                                  home.path(), INSTALL_PACKAGE});
        ASSERT_TRUE(process.waitForFinished());
        const Tree tree = treeAt(home.filePath("result"));
        if (tree.isEmpty())
            GTEST_SKIP() << "cannot mount: " << process.readAllStandardError().constData();
        if (tree == newTree) {
            ++newSets;
            EXPECT_EQ(process.exitCode(), 0);
        } else {
            ++oldSets;
            EXPECT_EQ(tree, (Tree{{"old.bin", "old"}})) << size;
            EXPECT_EQ(process.exitCode(), static_cast<int>(PackageProblemKind::FileSystem))
                << size << process.readAllStandardError().constData();
        }
    }
    EXPECT_GT(oldSets, 4);
    EXPECT_GT(newSets, 1);
}

} // namespace
