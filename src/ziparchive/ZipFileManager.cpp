#include "ziparchive/ZipFileManager.h"

#include <QFile>

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <cerrno>

namespace vorn {

std::optional<FileAttributes> ZipFileManager::_attributesOfItemAtPath(const QString &path,
                                                                      bool followingSymLinks,
                                                                      std::error_code *error) const
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if ((followingSymLinks ? ::stat : ::lstat)(name.constData(), &status) != 0) {
        if (error)
            *error = std::error_code(errno, std::generic_category());
        return std::nullopt;
    }
    const auto sinceEpoch = std::chrono::seconds(status.st_mtim.tv_sec) +
                            std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return FileAttributes{.modificationDate = std::chrono::system_clock::time_point(sinceEpoch)};
}

std::optional<quint64> ZipFileManager::availableBytesAtPath(const QString &path) const
{
    struct statvfs status = {};
    if (::statvfs(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    return quint64{status.f_bavail} * status.f_frsize;
}

} // namespace vorn
