#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace vorn {

// The folder in the caches directory that holds the firmware files. Packages without a top folder
// of their own are unpacked to it, too.
inline const QString kFirmwareFolderName = QStringLiteral("VornUpdate2");

struct FirmwareScan
{
    // The names of the files with the extension "bin", in the order the file system gives them.
    QStringList files;
    // The folder has no entry of any kind.
    bool isEmpty = true;
};

// Reads the firmware folder; nothing when it is missing or cannot be read. Any thread.
std::optional<FirmwareScan> scanFirmwareFolder();

} // namespace vorn
