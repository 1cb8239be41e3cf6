#include "firmware/StagingFolder.h"

#include "firmware/PackageLog.h"
#include "platform/Directories.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>
#include <vector>

namespace vorn {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kPrefix = ".VornUpdate2-staging-";

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

} // namespace

StagingFolder::StagingFolder(fs::path path, FileDescriptor lock)
    : m_path(std::move(path)), m_lock(std::move(lock))
{
}

std::unique_ptr<StagingFolder> StagingFolder::create()
{
    const fs::path caches = cachesPath();
    std::error_code error;
    fs::create_directories(caches, error);
    if (error) {
        errno = error.value();
        return nullptr;
    }
    std::string path = (caches / kPrefix).string() + "XXXXXX";
    if (!::mkdtemp(path.data()))
        return nullptr;
    FileDescriptor lock = openFolder(path);
    if (!lock.isValid())
        return nullptr;
    // A file system without locks leaves the folder unmarked, which matters only to a second
    // instance of the program that starts at this moment.
    ::flock(lock.get(), LOCK_EX | LOCK_NB);
    std::unique_ptr<StagingFolder> folder(new StagingFolder(path, std::move(lock)));
    for (const fs::path &part : {folder->content(), folder->setAside()}) {
        if (!fs::create_directory(part, error)) {
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
        error.clear(); // nothing was ever set aside
    for (const fs::path &path : kept) {
        const fs::path place = destination() / path.filename();
        if (!error && !fs::exists(fs::symlink_status(place, error)))
            fs::rename(path, place, error);
    }
    if (error) {
        qCWarning(packagesLog, "cannot bring back what is in %s: %s", setAside().c_str(),
                  error.message().c_str());
        return; // the next start tries again
    }
    fs::remove_all(m_path, error);
    if (error)
        qCWarning(packagesLog, "cannot remove %s: %s", m_path.c_str(), error.message().c_str());
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
            continue; // another instance is at work in it
        qCInfo(packagesLog, "ending the work that was left in %s", path.c_str());
        const StagingFolder leftover(path, std::move(lock));
    }
}

} // namespace vorn
