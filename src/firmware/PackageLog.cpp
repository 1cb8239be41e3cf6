#include "firmware/PackageLog.h"

Q_LOGGING_CATEGORY(packagesLog, "vorn.packages")
