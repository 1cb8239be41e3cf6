#pragma once

#include "firmware/FirmwareLibrary.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace vorn {

// What is known of a package download; each response begins a new one.
struct PackageState
{
    QByteArray data;           // the body so far, until it is saved or given up
    qint64 totalNum = 0;       // the body's expected length, 0 when it is not known
    QString suggestedFilename; // the archive's name
    // The archive's name up to its first ".": the firmware folder, also for the update.
    QString curDirName = firmwareFolderName;
    std::optional<QString> lastModifiedString;
    // 1 while no download is accepted or after it was refused, 0 once one was accepted.
    qint8 mIsCancel = 1;
};

} // namespace vorn
