// The program itself, started as a user would.
#include "tests/support/Eventually.h"
#include "tests/support/QtPrinting.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <system_error>

namespace {

using vorn::eventually;

struct Row
{
    QStringList arguments;
    int exitCode;
    const char *saysOnStdout;
    const char *saysOnStderr;
};

QByteArray statusOf(qint64 process)
{
    QFile status(QString("/proc/%1/status").arg(process));
    return status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
}

// Whether the program watches its device directory, before which it has taken over the signals.
bool hasTakenOverSignals(qint64 process)
{
    std::error_code error;
    for (const auto &file :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/fd", error))
        if (std::filesystem::read_symlink(file, error) == "anon_inode:inotify")
            return true;
    return false;
}

struct ProgramTest : testing::Test
{
    void start(const QStringList &arguments, const QString &platform = "offscreen")
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"})
            environment.insert(name, home.path());
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
            environment.remove(name);
        if (!platform.isEmpty())
            environment.insert("QT_QPA_PLATFORM", platform);
        program.setProcessEnvironment(environment);
        program.start(VORNUPDATER, arguments);
        ASSERT_TRUE(program.waitForStarted(20'000));
    }

    const QTemporaryDir home;
    QProcess program;
};

TEST_F(ProgramTest, AnswersForItselfWithoutADisplayAndComplainsOfBadOptions)
{
    for (const Row &row : std::vector<Row>{
             {{"--help"}, 0, "--device-dir <DIR>", ""},
             {{"--version"}, 0, "vornupdater 1.", ""},
             {{"--nonsense"}, 2, "", "Unknown option 'nonsense'"},
             {{"argument"}, 2, "", "Unexpected argument: argument"},
             {{"--device-dir", "/nowhere"}, 2, "", "/nowhere cannot be used: No such file"},
             {{"--device-dir", "/etc/passwd"},
              2,
              "",
              "/etc/passwd cannot be used: Not a directory"},
             {{"--package-host", "a b"}, 2, "", "HOST[:PORT]: a b"},
             {{"--package-ca", "/nowhere"}, 2, "", "/nowhere"},
             {{}, 1, "", "no display"},
         }) {
        SCOPED_TRACE(qPrintable(row.arguments.join(u' ')));
        ASSERT_NO_FATAL_FAILURE(start(row.arguments, {}));
        ASSERT_TRUE(program.waitForFinished(20'000));
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(program.exitCode(), row.exitCode);
        const QByteArray out = program.readAllStandardOutput();
        const QByteArray err = program.readAllStandardError();
        EXPECT_TRUE(out.contains(row.saysOnStdout)) << out.constData();
        EXPECT_TRUE(err.contains(row.saysOnStderr)) << err.constData();
        EXPECT_TRUE(row.exitCode == 0 ? err.isEmpty() : out.isEmpty());
    }
}

TEST_F(ProgramTest, EndsInGoodOrderOnASignal)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const QTemporaryDir devices;
        ASSERT_NO_FATAL_FAILURE(start({"--device-dir", devices.path()}));
        // From then on the signals wait for the event loop.
        ASSERT_TRUE(eventually([&] { return hasTakenOverSignals(program.processId()); }));
        EXPECT_TRUE(statusOf(program.processId()).contains("\nUmask:\t0077\n"));
        ::kill(static_cast<pid_t>(program.processId()), signal);
        ASSERT_TRUE(program.waitForFinished(20'000)) << signal;
        EXPECT_EQ(program.exitStatus(), QProcess::NormalExit) << signal;
        EXPECT_EQ(program.exitCode(), 0) << signal;
    }
}

} // namespace
