#include "serial/SerialLog.h"

namespace vorn {

Q_LOGGING_CATEGORY(logSerial, "vorn.serial")

} // namespace vorn
