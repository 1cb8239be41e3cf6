#include "firmware/PackagePublisher.h"

#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageLog.h"
#include "firmware/StagingFolder.h"
#include "platform/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <vector>

// Inside this file the file system's errors travel as exceptions; none leaves it.

namespace vorn {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void throwErrno(int error, const fs::path &path)
{
    throw fs::filesystem_error("publish", path, std::error_code(error, std::generic_category()));
}

[[noreturn]] void throwConflict(const fs::path &path)
{
    throwErrno(EEXIST, path);
}

// What stands at the path itself, not where a link there leads.
fs::file_type typeAt(const fs::path &path)
{
    return fs::symlink_status(path).type();
}

bool isNothingAt(const fs::path &path)
{
    return typeAt(path) == fs::file_type::not_found;
}

std::vector<fs::path> namesIn(const fs::path &folder)
{
    std::vector<fs::path> names;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

// Whether two things of the same name are folders to be merged; one of them can otherwise only take
// the place of the other when both are files.
bool areFolders(const fs::path &fresh, const fs::path &old)
{
    const fs::file_type type = typeAt(fresh);
    if (type != typeAt(old) || (type != fs::file_type::directory && type != fs::file_type::regular))
        throwConflict(old);
    return type == fs::file_type::directory;
}

void linkOrCopy(const fs::path &from, const fs::path &to)
{
    std::error_code error;
    fs::create_hard_link(from, to, error);
    if (error) // not every file system has links
        fs::copy(from, to, fs::copy_options::copy_symlinks);
}

// Adds to `fresh` whatever `old` has and `fresh` has not.
void keepOldFiles(const fs::path &fresh, const fs::path &old)
{
    for (const fs::path &name : namesIn(old)) {
        const fs::path target = fresh / name;
        const fs::path source = old / name;
        const bool isMissing = isNothingAt(target);
        if (isMissing && typeAt(source) != fs::file_type::directory) {
            linkOrCopy(source, target);
            continue;
        }
        if (isMissing)
            fs::create_directory(target, source);
        if (areFolders(target, source))
            keepOldFiles(target, source);
    }
}

void checkMove(const fs::path &from, const fs::path &to)
{
    if (isNothingAt(to) || !areFolders(from, to))
        return;
    for (const fs::path &name : namesIn(from))
        checkMove(from / name, to / name);
}

void moveInto(const fs::path &from, const fs::path &to)
{
    if (isNothingAt(to) || !areFolders(from, to)) {
        fs::rename(from, to);
        return;
    }
    for (const fs::path &name : namesIn(from))
        moveInto(from / name, to / name);
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
        const std::vector<fs::path> names = namesIn(m_staging.content());
        for (const fs::path &name : names)
            checkPlace(name);
        const bool mergesFirmware = m_packageFolder != m_firmwareFolder &&
                                    !isNothingAt(fresh(m_firmwareFolder)) &&
                                    fs::exists(place(m_firmwareFolder));
        if (mergesFirmware)
            keepOldFiles(fresh(m_firmwareFolder), place(m_firmwareFolder));
        if (const int error = m_staging.syncAll())
            throwErrno(error, m_staging.content());

        for (const fs::path &name : names)
            if (!isFirmware(name))
                moveInto(fresh(name), place(name));
        for (const fs::path &name : names)
            if (isFirmware(name))
                replaceFolder(name);
        // Named after a folder that it does not hold: the old one goes without a successor.
        if (std::find(names.begin(), names.end(), m_packageFolder) == names.end() &&
            fs::is_directory(place(m_packageFolder)))
            removeOldFolder();
        syncDestination();
    }

private:
    fs::path fresh(const fs::path &name) const { return m_staging.content() / name; }
    fs::path place(const fs::path &name) const { return m_staging.destination() / name; }
    bool isFirmware(const fs::path &name) const
    {
        return name == m_packageFolder || name == m_firmwareFolder;
    }

    void checkPlace(const fs::path &name) const
    {
        if (!isFirmware(name))
            checkMove(fresh(name), place(name));
        else if (typeAt(fresh(name)) != fs::file_type::directory ||
                 (!isNothingAt(place(name)) && !fs::is_directory(place(name))))
            throwConflict(place(name));
    }

    void replaceFolder(const fs::path &name) const
    {
        if (isNothingAt(place(name))) {
            fs::rename(fresh(name), place(name));
            return;
        }
        if (::renameat2(AT_FDCWD, fresh(name).c_str(), AT_FDCWD, place(name).c_str(),
                        RENAME_EXCHANGE) == 0)
            return;
        if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP)
            throwErrno(errno, place(name));
        // A file system that cannot exchange. Between these two steps the staging folder knows what
        // to bring back.
        fs::rename(place(name), m_staging.setAside() / name);
        fs::rename(fresh(name), place(name));
    }

    // The package is in place by now: an old folder that stays fails nothing.
    void removeOldFolder() const
    {
        std::error_code error;
        fs::rename(place(m_packageFolder), m_staging.file("old-folder"), error);
        if (error)
            qCWarning(packagesLog, "cannot remove %s: %s", place(m_packageFolder).c_str(),
                      error.message().c_str());
    }

    // Puts the renames on the disk before what they replaced is removed. They are done: a file
    // system that cannot do this fails nothing.
    void syncDestination() const
    {
        const FileDescriptor folder(
            ::open(m_staging.destination().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!folder.isValid() || ::fsync(folder.get()) != 0)
            qCWarning(packagesLog, "%s: %s", m_staging.destination().c_str(), std::strerror(errno));
    }

    const StagingFolder &m_staging;
    const fs::path m_packageFolder;
    const fs::path m_firmwareFolder = firmwareFolderName.latin1();
};

} // namespace

PackageProblem publishPackage(const StagingFolder &staging, const fs::path &packageFolder)
{
    try {
        Publisher(staging, packageFolder).run();
        return {};
    } catch (const fs::filesystem_error &error) {
        const QString path = QFile::decodeName(error.path1().c_str());
        if (error.code() == std::errc::file_exists)
            return {PackageProblem::Kind::Conflict,
                    QStringLiteral("%1 is in the package's way").arg(path)};
        return PackageProblem::fromErrno(error.code().value(), path);
    }
}

} // namespace vorn
