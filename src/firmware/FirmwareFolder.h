#pragma once

#include <QString>
#include <QStringList>

#include <cerrno>

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
    // The errno if the folder could not be read, ENOENT if it does not exist; the other members
    // are then empty.
    int error = 0;

    bool isUnreadable() const { return error != 0 && error != ENOENT; }
};

// Reads the firmware folder. Any thread.
FirmwareScan scanFirmwareFolder();

} // namespace vorn
