#include "platform/DeviceNode.h"

#include "platform/SerialDeviceName.h"

#include <QFile>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <vector>

namespace vorn {
namespace {

namespace fs = std::filesystem;

// Calls `visit` with each entry of a directory in /proc until it returns true; returns whether it
// did. Entries of processes that have ended in the meantime are skipped.
template <typename Visit>
bool anyEntry(const fs::path &directory, Visit visit)
{
    std::error_code failure;
    for (fs::directory_iterator entry(directory, failure); entry != end(entry);
         entry.increment(failure))
        if (visit(entry->path()))
            return true;
    return false;
}

// The same for each process: calls `visit` with its directory and its number.
template <typename Visit>
bool anyProcess(Visit visit)
{
    return anyEntry("/proc", [&](const fs::path &directory) {
        const std::string name = directory.filename();
        qint64 pid = 0;
        const auto number = std::from_chars(name.data(), name.data() + name.size(), pid);
        return number.ec == std::errc() && visit(directory, pid);
    });
}

QString programOf(const fs::path &process)
{
    QFile file(process / "comm");
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QByteArray name = file.readAll();
    if (name.endsWith('\n'))
        name.chop(1);
    return printableName(QString::fromUtf8(name));
}

bool leadsTo(const fs::path &descriptor, dev_t device)
{
    // Without a round trip to a file server, which might hang.
    struct statx opened = {};
    return ::statx(AT_FDCWD, descriptor.c_str(), AT_STATX_DONT_SYNC, STATX_TYPE, &opened) == 0 &&
           S_ISCHR(opened.stx_mode) &&
           makedev(opened.stx_rdev_major, opened.stx_rdev_minor) == device;
}

QString groupName(gid_t number)
{
    std::vector<char> buffer(1024);
    group entry{};
    group *found = nullptr;
    while (::getgrgid_r(number, &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(buffer.size() * 2); // a group with many members
    return found ? QString::fromLocal8Bit(found->gr_name) : QString::number(number);
}

} // namespace

DeviceNodeFacts deviceNodeFacts(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (::stat(name.constData(), &status) != 0)
        return {};
    return {.exists = true,
            .isAccessible = ::access(name.constData(), R_OK | W_OK) == 0,
            .group = groupName(status.st_gid),
            .mode = status.st_mode & 07777U};
}

QList<NodeHolder> holdersOf(const QString &path)
{
    QList<NodeHolder> holders;
    struct stat status = {};
    if (::stat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISCHR(status.st_mode))
        return holders;
    const auto isOfNode = [&](const fs::path &file) { return leadsTo(file, status.st_rdev); };
    anyProcess([&](const fs::path &process, qint64 pid) {
        if (pid != ::getpid() && anyEntry(process / "fd", isOfNode))
            holders.append({programOf(process), pid});
        return false;
    });
    return holders;
}

bool isProgramRunning(const QString &program)
{
    return anyProcess(
        [&](const fs::path &process, qint64) { return programOf(process) == program; });
}

} // namespace vorn
