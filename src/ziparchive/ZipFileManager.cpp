#include "ziparchive/ZipFileManager.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace vorn {

namespace {

// As many links as the kernel follows in one path.
constexpr int kMaxLinks = 40;

std::nullopt_t fail(int code, std::error_code *error)
{
    if (error)
        *error = std::error_code(code, std::generic_category());
    return std::nullopt;
}

FileAttributes::Type typeOf(mode_t mode)
{
    if (S_ISREG(mode))
        return FileAttributes::Type::Regular;
    if (S_ISDIR(mode))
        return FileAttributes::Type::Directory;
    return S_ISLNK(mode) ? FileAttributes::Type::SymbolicLink : FileAttributes::Type::Other;
}

} // namespace

std::optional<FileAttributes> ZipFileManager::_attributesOfItemAtPath(const QString &path,
                                                                      bool followingSymLinks,
                                                                      std::error_code *error) const
{
    QString current = path;
    for (int link = 0; link <= kMaxLinks; ++link) {
        const auto attributes = attributesOfItemAtPath(current, error);
        if (!followingSymLinks || !attributes ||
            attributes->type != FileAttributes::Type::SymbolicLink)
            return attributes;
        const auto destination = destinationOfSymbolicLinkAtPath(current, error);
        if (!destination)
            return std::nullopt;
        current = *destination;
    }
    return fail(ELOOP, error);
}

std::optional<FileAttributes> ZipFileManager::attributesOfItemAtPath(const QString &path,
                                                                     std::error_code *error) const
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return fail(errno, error);
    const auto sinceEpoch = std::chrono::seconds(status.st_mtim.tv_sec) +
                            std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return FileAttributes{.type = typeOf(status.st_mode),
                          .size = static_cast<quint64>(status.st_size),
                          .modificationDate = std::chrono::system_clock::time_point(sinceEpoch)};
}

std::optional<QString> ZipFileManager::destinationOfSymbolicLinkAtPath(const QString &path,
                                                                       std::error_code *error) const
{
    std::array<char, PATH_MAX> target = {};
    const ssize_t length =
        ::readlink(QFile::encodeName(path).constData(), target.data(), target.size());
    if (length < 0)
        return fail(errno, error);
    const QString destination = QFile::decodeName(QByteArray(target.data(), length));
    // A relative link counts from the folder it is in.
    return QDir::isAbsolutePath(destination) ? destination
                                             : QFileInfo(path).path() + u'/' + destination;
}

std::optional<QByteArray> ZipFileManager::contentsAtPath(const QString &path) const
{
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray contents = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return contents;
}

bool ZipFileManager::createDirectoryAtPath(const QString &path) const
{
    return QDir().mkpath(path);
}

std::optional<quint64> ZipFileManager::availableBytesAtPath(const QString &path) const
{
    struct statvfs status = {};
    if (::statvfs(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return quint64{status.f_bavail} * status.f_frsize;
}

} // namespace vorn
