#pragma once

#include <QLoggingCategory>

namespace vorn {

Q_DECLARE_LOGGING_CATEGORY(zipArchiveLog)

} // namespace vorn
