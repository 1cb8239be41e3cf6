#include "firmware/PackagePublisher.h"

#include "firmware/FirmwareFolder.h"
#include "firmware/StagingFolder.h"
#include "platform/FileDescriptor.h"

#include <QLoggingCategory>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <system_error>

// Inside this file the file system's errors travel as exceptions; none leaves it.

namespace vorn {

namespace fs = std::filesystem;

namespace {

Q_LOGGING_CATEGORY(logFirmware, "vorn.firmware")

// In every folder published under a package's own name: it comes and goes with the folder, and no
// package can bring it into a folder that is not published.
constexpr const char *kMarker = ".published-by-vornupdater";

[[noreturn]] void throwErrno(int error, const fs::path &path)
{
    throw fs::filesystem_error("publish", path, std::error_code(error, std::generic_category()));
}

[[noreturn]] void throwConflict(const fs::path &path)
{
    throwErrno(EEXIST, path);
}

// The type of the item itself; a symbolic link is not followed.
fs::file_type typeAt(const fs::path &path)
{
    return fs::symlink_status(path).type();
}

bool isNothingAt(const fs::path &path)
{
    return typeAt(path) == fs::file_type::not_found;
}

bool isFolderAt(const fs::path &path)
{
    return typeAt(path) == fs::file_type::directory;
}

void linkOrCopy(const fs::path &from, const fs::path &to)
{
    std::error_code error;
    fs::create_hard_link(from, to, error);
    if (error) // not every file system has links
        fs::copy(from, to, fs::copy_options::copy_symlinks);
}

// Adds to `fresh` whatever only `old` has. Where both have a name, both must have a folder or both
// a file.
void keepOldFiles(const fs::path &fresh, const fs::path &old)
{
    for (const fs::directory_entry &entry : fs::directory_iterator(old)) {
        const fs::path &source = entry.path();
        const fs::path target = fresh / source.filename();
        if (isNothingAt(target) && !isFolderAt(source)) {
            linkOrCopy(source, target);
            continue;
        }
        if (isNothingAt(target))
            fs::create_directory(target, source);
        if (typeAt(target) != typeAt(source) ||
            (!isFolderAt(target) && typeAt(target) != fs::file_type::regular))
            throwConflict(source);
        if (isFolderAt(target))
            keepOldFiles(target, source);
    }
}

class Publisher
{
public:
    Publisher(const StagingFolder &staging, fs::path packageFolder)
        : m_staging(staging), m_packageFolder(std::move(packageFolder))
    {
    }

    void run() const
    {
        const bool isNamedAfterFirmware = m_packageFolder == m_firmwareFolder;
        checkTarget(m_packageFolder);
        checkTarget(m_firmwareFolder);
        for (const fs::directory_entry &entry : fs::directory_iterator(m_staging.content()))
            if (const fs::path name = entry.path().filename();
                name != m_packageFolder && name != m_firmwareFolder)
                qCWarning(logFirmware) << "Not published:" << QString::fromStdString(name);
        if (!isNamedAfterFirmware && has(m_firmwareFolder) && fs::exists(target(m_firmwareFolder)))
            keepOldFiles(fresh(m_firmwareFolder), target(m_firmwareFolder));
        if (!isNamedAfterFirmware && has(m_packageFolder))
            mark(fresh(m_packageFolder));
        if (const int error = m_staging.syncAll())
            throwErrno(error, m_staging.content());

        if (has(m_packageFolder))
            replaceFolder(m_packageFolder);
        else if (isFolderAt(target(m_packageFolder)))
            removeOldFolder();
        if (!isNamedAfterFirmware && has(m_firmwareFolder))
            replaceFolder(m_firmwareFolder);
        syncDestination();
    }

private:
    fs::path fresh(const fs::path &name) const { return m_staging.content() / name; }
    fs::path target(const fs::path &name) const { return m_staging.destination() / name; }
    bool has(const fs::path &name) const { return !isNothingAt(fresh(name)); }

    void checkTarget(const fs::path &name) const
    {
        const fs::path path = target(name);
        const bool isReplaceable = name == m_firmwareFolder
                                       ? fs::is_directory(path)
                                       : isFolderAt(path) && !isNothingAt(path / kMarker);
        if (has(name) && !isFolderAt(fresh(name)))
            throwConflict(path);
        // A mere file is in the way only of a folder.
        if (!isNothingAt(path) && !isReplaceable && (has(name) || fs::is_directory(path)))
            throwConflict(path);
    }

    static void mark(const fs::path &folder)
    {
        const fs::path marker = folder / kMarker;
        if (isNothingAt(marker) && !std::ofstream(marker).is_open())
            throwErrno(errno, marker);
    }

    void replaceFolder(const fs::path &name) const
    {
        if (isNothingAt(target(name))) {
            fs::rename(fresh(name), target(name));
            return;
        }
        if (::renameat2(AT_FDCWD, fresh(name).c_str(), AT_FDCWD, target(name).c_str(),
                        RENAME_EXCHANGE) == 0)
            return;
        if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
            throwErrno(errno, target(name));
        // The file system cannot exchange. If the program dies between these two steps, the folder
        // that was set aside is restored.
        fs::rename(target(name), m_staging.setAside() / name);
        fs::rename(fresh(name), target(name));
    }

    // Failing to remove it does not fail the package, whose other files have their places.
    void removeOldFolder() const
    {
        std::error_code error;
        fs::rename(target(m_packageFolder), m_staging.file("old-folder"), error);
        if (error)
            qCWarning(logFirmware)
                << "Cannot remove" << QString::fromStdString(target(m_packageFolder))
                << error.message().c_str();
    }

    // Flushes the renames before what they replaced is removed. They are done by now: a file system
    // that cannot do this does not fail the package.
    void syncDestination() const
    {
        const FileDescriptor folder(
            ::open(m_staging.destination().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder.isValid() || ::fsync(folder.get()) != 0)
            qCWarning(logFirmware, "%s: %s", m_staging.destination().c_str(), std::strerror(errno));
    }

    const StagingFolder &m_staging;
    const fs::path m_packageFolder;
    const fs::path m_firmwareFolder = kFirmwareFolderName.toStdString();
};

} // namespace

PackageProblem publishPackage(const StagingFolder &staging, const fs::path &packageFolder)
{
    try {
        Publisher(staging, packageFolder).run();
        return {};
    } catch (const fs::filesystem_error &error) {
        const QString path = QString::fromStdString(error.path1());
        if (error.code() == std::errc::file_exists)
            return {PackageProblemKind::Conflict, 0, path};
        return {PackageProblemKind::FileSystem, error.code().value(), path};
    }
}

} // namespace vorn
