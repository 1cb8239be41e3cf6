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

// Every part of a path can cost a folder, and an archive can have thousands of paths; firmware
// packages have three or four.
constexpr qsizetype kMaxDepth = 64;

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

bool isDriveLetter(const QString &name)
{
    return name.size() >= 2 && name.at(1) == u':' && name.at(0).unicode() < 0x80 &&
           name.at(0).isLetter();
}

Place reasonAgainst(int folder, const char *name)
{
    const int error = errno;
    struct stat status = {};
    if (error == ELOOP ||
        (error == ENOTDIR && ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISLNK(status.st_mode)))
        return Place::Outside;
    errno = error;
    return error == ENOTDIR ? Place::Occupied : Place::Unreachable;
}

FileDescriptor openFolder(int parent, const char *name)
{
    return FileDescriptor(::openat(parent, name, kFolderFlags | O_NOFOLLOW));
}

} // namespace

std::optional<SafeDestination::Parts> SafeDestination::partsOf(const QString &name)
{
    if (name.startsWith(u'/') || isDriveLetter(name))
        return std::nullopt;
    Parts parts;
    for (const QString &part : name.split(u'/', Qt::SkipEmptyParts)) {
        if (part == u".")
            continue;
        if (part != u"..") {
            parts.append(QFile::encodeName(part));
            continue;
        }
        if (parts.isEmpty())
            return std::nullopt;
        parts.removeLast();
    }
    return parts;
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

Place SafeDestination::enter(const Parts &folder)
{
    // Longer paths could not be named as a whole afterwards, by this program or any other.
    qsizetype length = m_path.size();
    for (const QByteArray &part : folder)
        length += part.size() + 1;
    if (length >= PATH_MAX || folder.size() > kMaxDepth) {
        errno = ENAMETOOLONG;
        return Place::Unreachable;
    }

    const bool isBelowCurrent = m_parts.size() <= folder.size() &&
                                std::equal(m_parts.begin(), m_parts.end(), folder.begin());
    if (!isBelowCurrent) {
        m_folder.reset();
        m_parts.clear();
    }
    for (qsizetype i = m_parts.size(); i < folder.size(); ++i) {
        const char *name = folder.at(i).constData();
        FileDescriptor next = openFolder(current(), name);
        if (!next.isValid() && errno == ENOENT &&
            (::mkdirat(current(), name, 0777) == 0 || errno == EEXIST))
            next = openFolder(current(), name);
        if (!next.isValid())
            return reasonAgainst(current(), name);
        m_folder = std::move(next);
        m_parts.append(folder.at(i));
    }
    return Place::Free;
}

std::unique_ptr<OutputFile> SafeDestination::file(const QByteArray &name) const
{
    return std::make_unique<OutputFile>(current(), name);
}

} // namespace vorn
