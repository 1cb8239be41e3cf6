#pragma once

#include "firmware/PackageProblem.h"
#include "update/UpdateResult.h"

#include <QString>
#include <QStringList>

// Facts in words. The status texts are shown whole, as they stand.
namespace vorn::texts {

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

// One line in English for the log and for complaints. Control characters of a name that a server
// may have chosen are escaped.
QString description(const UpdateResult &result);
QString description(const PackageProblem &problem);

} // namespace vorn::texts
