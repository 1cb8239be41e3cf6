#pragma once

#include <QString>

// The status texts of updates, set whole.
namespace vorn::texts {

inline const QString kNoDeviceSelected = QStringLiteral("Prompt:No device selected");
inline const QString kDeviceNotOpened = QStringLiteral("Prompt:Device not opened");
inline const QString kNoFirmwareSelected = QStringLiteral("Prompt:No firmware selected");
inline const QString kDeviceDoesNotRespond =
    QStringLiteral("Prompt:Device does not respond during firmware update");
inline const QString kUpdateFailed =
    QStringLiteral("Prompt:Firmware update failed,please try again");
inline const QString kEraseFailed =
    QStringLiteral("Prompt:Failed to erase the fixed phone of the device ,please try again");
inline const QString kUpdating = QStringLiteral("Prompt:%1%progress,updating firmware");
inline const QString kUpdated = QStringLiteral("Prompt:100% progress,successfully update");

} // namespace vorn::texts
