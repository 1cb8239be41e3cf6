#pragma once

#include "firmware/PackageProblem.h"

namespace vorn {

// The texts of the firmware line during a download.
namespace texts {

inline const QString kPackageResponse = QStringLiteral("0");
inline const QString kPackageIsUpToDate =
    QStringLiteral("Prompt:Currently it is the latest firmware,no need to download");
inline const QString kPackageFailed =
    QStringLiteral("Prompt:Failed to download the latest firmware");
inline const QString kPackageInstalled =
    QStringLiteral("Prompt:Successfully downloaded the latest firmware");

// `total` is 0 when unknown; then the text has no figure.
QString packageProgress(qint64 received, qint64 total);

} // namespace texts

// One line in English, for the log and the command line's complaints. Control characters of the
// subject, which a server may have chosen, are escaped.
QString description(const PackageProblem &problem);

} // namespace vorn
