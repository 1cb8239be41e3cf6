#pragma once

#include <QString>

#include <chrono>
#include <optional>
#include <system_error>

namespace vorn {

// Attributes of a file. An attribute that is not known is left out.
struct FileAttributes
{
    std::optional<std::chrono::system_clock::time_point> modificationDate;
};

// The file-system services that ZipArchive uses. Paths are absolute or relative to the working
// directory.
class ZipFileManager
{
public:
    ZipFileManager() = default;
    ZipFileManager(const ZipFileManager &) = delete;
    ZipFileManager &operator=(const ZipFileManager &) = delete;
    virtual ~ZipFileManager() = default;

    // The attributes of the item at `path`, or nothing, with the errno in `error` when that is not
    // null. With `followingSymLinks`, those of the item at the end of a chain of symbolic links; a
    // chain without an end fails with ELOOP.
    std::optional<FileAttributes> _attributesOfItemAtPath(const QString &path,
                                                          bool followingSymLinks,
                                                          std::error_code *error) const;

    // How many bytes this user can still write to the file system of the folder `path`; nothing
    // when unknown. A program that wants to keep a reserve overrides it.
    virtual std::optional<quint64> availableBytesAtPath(const QString &path) const;
};

} // namespace vorn
