#include "packages/PackageLog.h"

Q_LOGGING_CATEGORY(packagesLog, "vorn.packages")
