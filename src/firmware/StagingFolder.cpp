#include "firmware/StagingFolder.h"

#include "platform/Directories.h"

#include <QFile>
#include <QLoggingCategory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

namespace vorn {

namespace fs = std::filesystem;

namespace {

Q_LOGGING_CATEGORY(logFirmware, "vorn.firmware")

constexpr std::string_view kPrefix = ".VornUpdate2-staging-";
// How many new folders in a row may be lost to other instances that are just starting.
constexpr int kAttempts = 100;

fs::path cachesPath()
{
    return QFile::encodeName(cachesDirectory()).toStdString();
}

std::vector<fs::path> entriesOf(const fs::path &folder, std::error_code &error)
{
    std::vector<fs::path> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        entries.push_back(entry->path());
    return entries;
}

FileDescriptor openFolder(const fs::path &path)
{
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

// Creates and locks a new folder. Null, with errno set, when that fails: with ENOENT when another
// instance that starts at this moment took the folder for a leftover, and removed it before it was
// locked.
FileDescriptor createLocked(std::string &path)
{
    if (!::mkdtemp(path.data()))
        return {};
    FileDescriptor lock = openFolder(path);
    // A file system without locks leaves the folder unmarked, which matters only to another
    // instance that starts at this moment.
    const bool isTaken =
        lock.isValid() && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    struct stat status = {};
    if (lock.isValid() && (isTaken || ::fstat(lock.get(), &status) != 0 || status.st_nlink == 0)) {
        lock.reset();
        errno = ENOENT;
    }
    return lock;
}

} // namespace

std::unique_ptr<StagingFolder> StagingFolder::create()
{
    const fs::path caches = cachesPath();
    std::error_code error;
    fs::create_directories(caches, error);
    if (error) {
        errno = error.value();
        return nullptr;
    }
    std::string path;
    FileDescriptor lock;
    for (int i = 0; i < kAttempts && !lock.isValid(); ++i) {
        path = (caches / kPrefix).string() + "XXXXXX";
        lock = createLocked(path);
        if (!lock.isValid() && errno != ENOENT)
            return nullptr;
    }
    if (!lock.isValid())
        return nullptr;
    std::unique_ptr<StagingFolder> folder(new StagingFolder(path, std::move(lock)));
    for (const fs::path &child : {folder->content(), folder->setAside()}) {
        if (!fs::create_directory(child, error)) {
            folder.reset();
            errno = error.value();
            return nullptr;
        }
    }
    return folder;
}

StagingFolder::~StagingFolder()
{
    std::error_code error;
    const std::vector<fs::path> kept = entriesOf(setAside(), error);
    if (error == std::errc::no_such_file_or_directory)
        error.clear(); // nothing was set aside
    for (const fs::path &path : kept) {
        const fs::path target = destination() / path.filename();
        if (!error && !fs::exists(fs::symlink_status(target, error)))
            fs::rename(path, target, error);
    }
    if (error) {
        qCWarning(logFirmware, "Cannot restore the content of %s: %s", setAside().c_str(),
                  error.message().c_str());
        return; // the next start tries again
    }
    fs::remove_all(m_path, error);
    if (error)
        qCWarning(logFirmware, "Cannot remove %s: %s", m_path.c_str(), error.message().c_str());
}

int StagingFolder::syncAll() const
{
    return ::syncfs(m_lock.get()) == 0 ? 0 : errno;
}

void StagingFolder::recoverInterruptedPublish()
{
    std::error_code error;
    for (const fs::path &path : entriesOf(cachesPath(), error)) {
        if (path.filename().native().rfind(kPrefix, 0) != 0)
            continue;
        FileDescriptor lock = openFolder(path);
        if (!lock.isValid() ||
            (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK))
            continue; // in use by another instance
        qCInfo(logFirmware, "Cleaning up the abandoned %s", path.c_str());
        const StagingFolder leftover(path, std::move(lock));
    }
}

} // namespace vorn
