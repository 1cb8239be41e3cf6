#include "benchmarks/Programs.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>

namespace vorn {
namespace {

double secondsOf(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

std::optional<pid_t> startProgram(const QStringList &command)
{
    std::vector<QByteArray> words;
    for (const QString &word : command)
        words.push_back(QFile::encodeName(word));
    std::vector<char *> arguments;
    for (QByteArray &word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int problem =
        posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return problem == 0 ? std::optional(child) : std::nullopt;
}

std::optional<ProgramRun> runProgram(const QStringList &command)
{
    rusage usage = {};
    int status = 0;
    const auto start = std::chrono::steady_clock::now();
    const auto child = startProgram(command);
    if (!child || ::wait4(*child, &status, 0, &usage) != *child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0)
        return std::nullopt;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    return ProgramRun{wall.count(), secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime),
                      usage.ru_maxrss};
}

QString builtProgram(const QString &name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

} // namespace vorn
