#pragma once

#include "platform/FileDescriptor.h"

#include <filesystem>
#include <memory>

namespace vorn {

// A hidden folder in the caches directory in which a package is made ready, on the file system of
// the firmware folder, so that ready things get their place by a rename. A lock marks it as in use;
// the kernel takes the lock away from a program that dies. May be used on any thread.
//
//   new/         what is to be published; after an exchange, what was there before
//   set-aside/   what had to leave its place before the new could take it
class StagingFolder
{
public:
    // Null, with errno set, when it cannot be made.
    static std::unique_ptr<StagingFolder> create();

    StagingFolder(const StagingFolder &) = delete;
    StagingFolder &operator=(const StagingFolder &) = delete;
    // Brings back what is set aside and still has no successor, and removes the rest.
    ~StagingFolder();

    // The caches directory, in which things are published.
    std::filesystem::path destination() const { return m_path.parent_path(); }
    std::filesystem::path content() const { return m_path / "new"; }
    std::filesystem::path setAside() const { return m_path / "set-aside"; }
    // A name for a file that is being made.
    std::filesystem::path file(const char *name) const { return m_path / name; }

    // Writes everything on this file system to the disk; 0 or an errno.
    int syncAll() const;

    // Ends the publishing that a program left undone when it died: afterwards each folder of its
    // package is either all there or not there at all. Called at start-up, before the first look at
    // the firmware.
    static void recoverInterruptedPublish();

private:
    StagingFolder(std::filesystem::path path, FileDescriptor lock);

    const std::filesystem::path m_path;
    const FileDescriptor m_lock;
};

} // namespace vorn
