#pragma once

#include "update/UpdateResult.h"

#include <QByteArray>
#include <QString>

namespace vorn {

// A whole firmware file, 1 to 2^31 - 1 bytes long, the lengths that the protocol can announce; or
// why there is none.
struct FirmwareImage
{
    QByteArray bytes;
    UpdateFailure failure;
};

// Reads the file, whose content is not judged. A null path means that none was chosen. Never waits,
// not even for a pipe.
FirmwareImage readFirmwareImage(const QString &path);

// Why the file could not be read just now, without reading it; None when it could.
UpdateFailure checkFirmwareImage(const QString &path);

} // namespace vorn
