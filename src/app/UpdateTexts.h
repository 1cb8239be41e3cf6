#pragma once

#include "update/UpdateResult.h"

#include <QString>
#include <QStringList>

// The status texts of the connection and of updates, made from facts.
namespace vorn::texts {

inline const QString kNoDeviceSelected = QStringLiteral("Prompt:No device selected");
inline const QString kDeviceNotOpened = QStringLiteral("Prompt:Device not opened");
inline const QString kNoFirmwareSelected = QStringLiteral("Prompt:No firmware selected");
inline const QString kFirmwareSelected = QStringLiteral("Prompt:Firmware selected");

enum class Connection { NotOpened, Opened, OpenFailed, CloseFailed, Closed };
QString ofConnection(Connection state, const QString &portName);

// None for a step that shows none.
QString ofProgress(const UpdateProgress &progress);
// What the end of an update or a version query shows, in order; a refusal may show nothing.
QStringList ofUpdateEnd(const UpdateResult &result);
QStringList ofVersionQueryEnd(const UpdateResult &result);
// What is shown for an image that cannot be used.
QString ofImageFailure(const UpdateFailure &failure);

// One line for the log.
QString logLineOf(const UpdateResult &result);
QString logLineOf(const UpdateFailure &failure);

} // namespace vorn::texts
