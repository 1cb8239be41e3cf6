#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>
#include <system_error>

namespace vorn {

// What is known of a file. An attribute that is not known is left out.
struct FileAttributes
{
    enum class Type { Regular, Directory, SymbolicLink, Other };

    Type type = Type::Regular;
    std::optional<quint64> size;
    std::optional<std::chrono::system_clock::time_point> modificationDate;
};

// The file-system services that ZipArchive uses. A program that wants to be asked for them (to keep
// a reserve of disk space, say) derives from it and hands its own to the archive. Paths are
// absolute or relative to the working directory. An error goes to `error` when that is not null,
// with the errno as its value; without an error, `error` is left as it is.
class ZipFileManager
{
public:
    ZipFileManager() = default;
    ZipFileManager(const ZipFileManager &) = delete;
    ZipFileManager &operator=(const ZipFileManager &) = delete;
    virtual ~ZipFileManager() = default;

    // The attributes of the item at `path`, or nothing. With `followingSymLinks`, those of what a
    // symbolic link leads to, through the whole chain; a chain that never ends fails with ELOOP.
    std::optional<FileAttributes> _attributesOfItemAtPath(const QString &path,
                                                          bool followingSymLinks,
                                                          std::error_code *error) const;

    // The attributes of the item itself, be it a symbolic link.
    virtual std::optional<FileAttributes> attributesOfItemAtPath(const QString &path,
                                                                 std::error_code *error) const;
    // What the symbolic link at `path` leads to, as a path from where `path` is one.
    virtual std::optional<QString> destinationOfSymbolicLinkAtPath(const QString &path,
                                                                   std::error_code *error) const;
    // The bytes of the regular file at `path`; nothing for anything else and for one it cannot
    // read.
    virtual std::optional<QByteArray> contentsAtPath(const QString &path) const;
    // Makes the folder and those on the way to it; true when it is there afterwards.
    virtual bool createDirectoryAtPath(const QString &path) const;
    // The bytes that this user can still write where the folder `path` is; nothing when unknown.
    virtual std::optional<quint64> availableBytesAtPath(const QString &path) const;
};

} // namespace vorn
