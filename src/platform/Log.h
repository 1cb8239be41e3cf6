#pragma once

#include <QLoggingCategory>

namespace vorn {

// Diagnostic lines of platform/ ("vorn.platform").
Q_DECLARE_LOGGING_CATEGORY(logPlatform)

} // namespace vorn
