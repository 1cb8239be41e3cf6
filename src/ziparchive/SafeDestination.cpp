#include "ziparchive/SafeDestination.h"

#include <QFile>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace vorn {

namespace {

// Each component may create a folder, and an archive may hold thousands of paths. Firmware packages
// are three or four deep.
constexpr qsizetype kMaxDepth = 64;

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool isDriveLetter(const QString &name)
{
    return name.size() >= 2 && name.at(1) == u':' && name.at(0).unicode() < 0x80 &&
           name.at(0).isLetter();
}

// Why the folder `name` could not be opened; to be called while errno says so.
ArchiveFailure folderFailure(int parent, const char *name)
{
    const int error = errno;
    struct stat status = {};
    if (error == ENOTDIR && ::fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISLNK(status.st_mode))
        return {.kind = ArchiveFailureKind::Outside};
    if (error == ENOTDIR)
        return {.kind = ArchiveFailureKind::NameTaken};
    return {.kind = ArchiveFailureKind::NotWritten, .code = error};
}

FileDescriptor openFolder(int parent, const char *name)
{
    return FileDescriptor(::openat(parent, name, kFolderFlags | O_NOFOLLOW));
}

} // namespace

std::optional<SafeDestination::Components> SafeDestination::componentsOf(const QString &name)
{
    if (name.startsWith(u'/') || name.contains(QChar::Null) || isDriveLetter(name))
        return std::nullopt;
    Components components;
    for (const QString &component : name.split(u'/', Qt::SkipEmptyParts)) {
        if (component == u".")
            continue;
        if (component != u"..") {
            components.append(QFile::encodeName(component));
            continue;
        }
        if (components.isEmpty())
            return std::nullopt;
        components.removeLast();
    }
    return components;
}

SafeDestination::SafeDestination(const QString &path)
    : m_path(path.isEmpty() ? QByteArray(".") : QFile::encodeName(path))
{
}

bool SafeDestination::open()
{
    m_root = FileDescriptor(::open(m_path.constData(), kFolderFlags));
    return m_root.isValid();
}

ArchiveFailure SafeDestination::enter(const Components &folder)
{
    // No program could open a longer path by its name afterwards.
    qsizetype length = m_path.size();
    for (const QByteArray &component : folder)
        length += component.size() + 1;
    if (length >= PATH_MAX || folder.size() > kMaxDepth)
        return {.kind = ArchiveFailureKind::NotWritten, .code = ENAMETOOLONG};

    const bool isBelowCurrent =
        m_components.size() <= folder.size() &&
        std::equal(m_components.begin(), m_components.end(), folder.begin());
    if (!isBelowCurrent) {
        m_folder.reset();
        m_components.clear();
    }
    for (qsizetype i = m_components.size(); i < folder.size(); ++i) {
        const char *name = folder.at(i).constData();
        FileDescriptor next = openFolder(current(), name);
        if (!next.isValid() && errno == ENOENT &&
            (::mkdirat(current(), name, 0777) == 0 || errno == EEXIST))
            next = openFolder(current(), name);
        if (!next.isValid())
            return folderFailure(current(), name);
        m_folder = std::move(next);
        m_components.append(folder.at(i));
    }
    return {};
}

std::unique_ptr<OutputFile> SafeDestination::file(const QByteArray &name) const
{
    return std::make_unique<OutputFile>(current(), name);
}

} // namespace vorn
