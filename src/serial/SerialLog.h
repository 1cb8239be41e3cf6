#pragma once

#include <QLoggingCategory>

namespace vorn {

// Diagnostic lines of serial/ ("vorn.serial").
Q_DECLARE_LOGGING_CATEGORY(logSerial)

} // namespace vorn
