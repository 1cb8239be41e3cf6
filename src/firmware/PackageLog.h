#pragma once

#include <QLoggingCategory>

// The log of firmware packages, "vorn.packages".
Q_DECLARE_LOGGING_CATEGORY(packagesLog)
