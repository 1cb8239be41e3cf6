#include "firmware/PackageStore.h"
#include "firmware/StagingFolder.h"
#include "tests/ziparchive/Tree.h"

#include <QDir>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>

using namespace vorn;

namespace {

constexpr long kNone = -1;

PackageProblem install(const QByteArray &archive)
{
    PackageStore store("VornUpdate2.zip", "VornUpdate2");
    const PackageProblem problem = store.save(archive);
    return problem ? problem : store.install();
}

// A child process that installs a package, traced from one change of a file to the next. For it,
// the kernel lacks the call `missing`.
class TracedInstall
{
public:
    TracedInstall(const QByteArray &archive, long missing) : m_missing(missing), m_pid(::fork())
    {
        if (m_pid == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            std::raise(SIGSTOP);
            ::_exit(install(archive) ? 1 : 0);
        }
        wait();
        ::ptrace(PTRACE_SETOPTIONS, m_pid, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    }
    TracedInstall(const TracedInstall &) = delete;
    ~TracedInstall() { kill(); }

    // Runs until before the next system call that changes or locks files, `count` times; false when
    // the program has ended instead.
    bool goToNextChange(int count)
    {
        while (count > 0 && isRunning()) {
            ::ptrace(PTRACE_SYSCALL, m_pid, nullptr, nullptr);
            wait();
            if (isRunning() && isBeforeChange())
                --count;
        }
        return isRunning();
    }
    void kill()
    {
        if (isRunning() && ::kill(m_pid, SIGKILL) == 0)
            wait();
    }
    bool hasSucceeded() const { return WIFEXITED(m_status) && WEXITSTATUS(m_status) == 0; }

private:
    bool isRunning() const { return WIFSTOPPED(m_status); }
    void wait() { ::waitpid(m_pid, &m_status, 0); }

    bool isBeforeChange() const
    {
        static constexpr std::array kChanges = {
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
        if (call == m_missing) // fails with ENOSYS, like any unknown call
            ::ptrace(PTRACE_POKEUSER, m_pid, offsetof(user, regs.orig_rax), -1L);
        if (call == SYS_openat)
            return (info.entry.args[2] & O_CREAT) != 0;
        return std::find(kChanges.begin(), kChanges.end(), call) != kChanges.end();
    }

    const long m_missing;
    const pid_t m_pid;
    int m_status = 0;
};

struct PackageKillTest : testing::Test
{
    PackageKillTest()
    {
        qputenv("XDG_CACHE_HOME", cache.toUtf8());
        QLoggingCategory::setFilterRules("vorn.*=false");
    }

    Tree tree() const { return treeAt(cache, "VornUpdate2.zip"); }

    // In memory if possible, since each of the many runs flushes everything to the disk.
    const QTemporaryDir home{QDir("/dev/shm").exists() ? "/dev/shm/vorn-XXXXXX" : QString()};
    const QString cache = home.filePath("cache");
    const QByteArray large = QByteArray(100'000, 'A');
    const QByteArray archive = makeArchive(
        {{"VornUpdate2/", {}}, {"VornUpdate2/a.bin", large}, {"VornUpdate2/sub/same.bin", large}});
    const Tree oldTree = {{"VornUpdate2/old.bin", "old"}, {"VornUpdate2/sub/same.bin", "old"}};
    const Tree newTree = {{"VornUpdate2/a.bin", large}, {"VornUpdate2/sub/same.bin", large}};
    const int limit = 1000;
};

TEST_F(PackageKillTest, AProgramKilledBeforeAnyChangeLeavesTheOldFirmwareOrTheNew)
{
    for (const long missing : {kNone, long{SYS_renameat2}}) { // which exchanges two names
        int oldSets = 0;
        int newSets = 0;
        bool wasKilled = true;
        for (int change = 1; wasKilled && change < limit; ++change) {
            SCOPED_TRACE(change);
            writeTree(cache, oldTree);
            TracedInstall install(archive, missing);
            wasKilled = install.goToNextChange(change);
            install.kill();
            StagingFolder::recoverInterruptedPublish();
            ASSERT_TRUE(tree() == oldTree || tree() == newTree)
                << tree().keys().join(' ').toStdString();
            ++(tree() == oldTree ? oldSets : newSets);
            EXPECT_NE(wasKilled, install.hasSucceeded());
        }
        EXPECT_EQ(tree(), newTree);
        EXPECT_GT(oldSets, 20);
        EXPECT_GT(newSets, 2);
    }
}

TEST_F(PackageKillTest, AnInstanceThatStartsBeforeAnyChangeDisturbsNothing)
{
    for (const long missing : {kNone, long{SYS_renameat2}}) { // which exchanges two names
        bool isRunning = true;
        for (int change = 1; isRunning && change < limit; ++change) {
            SCOPED_TRACE(change);
            writeTree(cache, oldTree);
            TracedInstall install(archive, missing);
            isRunning = install.goToNextChange(change);
            StagingFolder::recoverInterruptedPublish(); // as the other instance does
            install.goToNextChange(limit);
            EXPECT_TRUE(install.hasSucceeded());
            EXPECT_EQ(tree(), newTree);
        }
    }
}

TEST_F(PackageKillTest, AFailedFlushLeavesTheOldFirmware)
{
    for (const long missing : {SYS_fsync, SYS_syncfs}) {
        writeTree(cache, oldTree);
        TracedInstall install(archive, missing);
        install.goToNextChange(limit);
        EXPECT_FALSE(install.hasSucceeded());
        EXPECT_EQ(tree(), oldTree);
    }
}

TEST_F(PackageKillTest, AFailedWriteLeavesTheOldFirmware)
{
    rlimit usual = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
    std::signal(SIGXFSZ, SIG_IGN);
    // Too short for the archive, for a piece of a file, and for its last byte.
    for (const qsizetype longest : {archive.size() / 2, large.size() / 2, large.size() - 1}) {
        writeTree(cache, oldTree);
        const rlimit limited = {static_cast<rlim_t>(longest), usual.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limited), 0);
        const PackageProblem problem = install(archive);
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &usual), 0);
        EXPECT_EQ(problem.kind, PackageProblemKind::FileSystem);
        EXPECT_EQ(problem.code, EFBIG);
        EXPECT_EQ(tree(), oldTree);
    }
}

} // namespace
