#pragma once

#include "update/UpdateResult.h"

#include <QString>
#include <QStringList>

// The status texts, in their fixed wording: shown whole and never translated. Causes.h has what the
// program says besides.
namespace vorn::texts {

// The open button's titles, which tell its action apart, and the lists' placeholders.
inline const QString kOpen = QStringLiteral("Open");
inline const QString kClose = QStringLiteral("Close");
inline const QString kNoDevice = QStringLiteral("No device selected");
inline const QString kNoFirmware = QStringLiteral("No firmware selected");
// The devices that are offered have names that begin so.
inline const QString kDeviceNamePrefix = QStringLiteral("usbserial-");

inline const QString kNoDeviceSelected = QStringLiteral("Prompt:No device selected");
inline const QString kDeviceNotOpened = QStringLiteral("Prompt:Device not opened");
inline const QString kNoFirmwareSelected = QStringLiteral("Prompt:No firmware selected");
inline const QString kFirmwareSelected = QStringLiteral("Prompt:Firmware selected");

enum class Connection { NotOpened, Opened, OpenFailed, CloseFailed, Closed };
QString ofConnection(Connection state, const QString &portName);

// Null for a step that has no text.
QString ofProgress(const UpdateProgress &progress);
// What the end of an update or a version query shows, in order; a refusal may show nothing.
QStringList ofUpdateEnd(const UpdateResult &result);
QStringList ofVersionQueryEnd(const UpdateResult &result);

inline const QString kPackageResponse = QStringLiteral("0");
inline const QString kPackageIsUpToDate =
    QStringLiteral("Prompt:Currently it is the latest firmware,no need to download");
inline const QString kPackageFailed =
    QStringLiteral("Prompt:Failed to download the latest firmware");
inline const QString kPackageInstalled =
    QStringLiteral("Prompt:Successfully downloaded the latest firmware");
// `total` is 0 when unknown; then the text has no figure.
QString ofPackageProgress(qint64 received, qint64 total);

} // namespace vorn::texts
