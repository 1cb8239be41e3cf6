#pragma once

#include "platform/FileDescriptor.h"

#include <filesystem>
#include <memory>

namespace vorn {

// A hidden folder in the caches directory where a package is prepared, on the firmware folder's
// file system, so that what is ready can be renamed into place. A lock marks it as in use; the
// kernel releases the lock of a program that dies. Any thread.
//
//   new/         what is to be published; after an exchange, what it replaced
//   set-aside/   what was moved out of the way before the new folder could take its place
class StagingFolder
{
public:
    // Null, with errno set, when it cannot be created.
    static std::unique_ptr<StagingFolder> create();

    StagingFolder(const StagingFolder &) = delete;
    StagingFolder &operator=(const StagingFolder &) = delete;
    // Restores what was set aside and not replaced, and removes the rest.
    ~StagingFolder();

    // The caches directory, where the folders are published.
    std::filesystem::path destination() const { return m_path.parent_path(); }
    std::filesystem::path content() const { return m_path / "new"; }
    std::filesystem::path setAside() const { return m_path / "set-aside"; }
    // The path of a work file.
    std::filesystem::path file(const char *name) const { return m_path / name; }

    // Flushes this whole file system to the disk; 0 or an errno.
    int syncAll() const;

    // Completes or undoes what a program that died while publishing left behind: afterwards each
    // of the package's folders is either complete or absent. Called at start-up, before the first
    // scan of the firmware folder.
    static void recoverInterruptedPublish();

private:
    StagingFolder(std::filesystem::path path, FileDescriptor lock)
        : m_path(std::move(path)), m_lock(std::move(lock))
    {
    }

    const std::filesystem::path m_path;
    const FileDescriptor m_lock;
};

} // namespace vorn
