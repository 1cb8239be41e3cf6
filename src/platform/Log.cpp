#include "platform/Log.h"

namespace vorn {

Q_LOGGING_CATEGORY(logPlatform, "vorn.platform")

} // namespace vorn
