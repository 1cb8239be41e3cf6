#pragma once

#include "update/UpdateResult.h"

#include <QByteArray>
#include <QString>

namespace vorn {

// The content of a firmware file, 1 to 2^31 - 1 bytes (the lengths that the protocol can announce),
// or why it could not be read.
struct FirmwareImage
{
    QByteArray bytes;
    UpdateFailure failure;
};

// Reads the file without checking its content. A null path means that no file was chosen. Never
// blocks, not even on a pipe.
FirmwareImage readFirmwareImage(const QString &path);

// Checks whether readFirmwareImage() would succeed, without reading the file; None if so.
UpdateFailure checkFirmwareImage(const QString &path);

} // namespace vorn
