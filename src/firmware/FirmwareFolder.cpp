#include "firmware/FirmwareFolder.h"

#include "platform/Directories.h"

#include <QFile>
#include <QLoggingCategory>

#include <dirent.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace vorn {

namespace {

Q_LOGGING_CATEGORY(logFirmware, "vorn.firmware")

struct DirCloser
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};

// The extension is what follows the last ".", or the whole name without one.
bool isFirmwareFile(const QByteArray &name)
{
    return name.mid(name.lastIndexOf('.') + 1) == "bin";
}

} // namespace

// By readdir(), since Qt's own listing does not promise the file system's order.
std::optional<FirmwareScan> scanFirmwareFolder()
{
    const QString path = cachesDirectory() + u'/' + kFirmwareFolderName;
    const std::unique_ptr<DIR, DirCloser> folder(::opendir(QFile::encodeName(path).constData()));
    int error = errno;
    if (!folder) {
        qCDebug(logFirmware) << path << std::strerror(error);
        return std::nullopt;
    }
    FirmwareScan scan;
    for (;;) {
        errno = 0;
        const dirent *entry = ::readdir(folder.get());
        if (!entry)
            break;
        const QByteArray bytes(entry->d_name);
        if (bytes == "." || bytes == "..")
            continue;
        scan.isEmpty = false;
        const QString name = QFile::decodeName(bytes);
        if (!isFirmwareFile(bytes))
            continue;
        // A name that is not valid text could be listed but never opened.
        if (QFile::encodeName(name) == bytes)
            scan.files.append(name);
        else
            qCWarning(logFirmware) << "Not listed, its name is not valid text:" << bytes;
    }
    error = errno;
    if (error != 0) {
        qCWarning(logFirmware) << path << std::strerror(error);
        return std::nullopt;
    }
    return scan;
}

} // namespace vorn
