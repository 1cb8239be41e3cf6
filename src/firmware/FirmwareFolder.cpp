#include "firmware/FirmwareFolder.h"

#include "platform/Directories.h"

#include <QFile>
#include <QLoggingCategory>

#include <filesystem>

namespace vorn {

namespace {

Q_LOGGING_CATEGORY(logFirmware, "vorn.firmware")

} // namespace

// Not by QDir, which does not promise the file system's order.
FirmwareScan scanFirmwareFolder()
{
    namespace fs = std::filesystem;
    const QString path = cachesDirectory() + u'/' + kFirmwareFolderName;
    FirmwareScan scan;
    std::error_code error;
    for (fs::directory_iterator entry(path.toStdString(), error), end; !error && entry != end;
         entry.increment(error)) {
        scan.isEmpty = false;
        const std::string bytes = entry->path().filename();
        // The extension is what follows the last ".", or the whole name without one.
        if (bytes.substr(bytes.rfind('.') + 1) != "bin")
            continue;
        // A name that is not valid text could be listed but never opened.
        if (const QString name = QString::fromStdString(bytes); name.toStdString() == bytes)
            scan.files.append(name);
        else
            qCWarning(logFirmware) << "Not listed, its name is not valid text:" << bytes.c_str();
    }
    if (!error)
        return scan;
    FirmwareScan failed;
    failed.error = error.value();
    if (failed.isUnreadable())
        qCWarning(logFirmware) << path << error.message().c_str();
    return failed;
}

} // namespace vorn
