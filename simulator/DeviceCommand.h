#pragma once

#include <QStringList>

namespace vorn {

// "vornsim device": plugs a simulated device in and keeps it until it is interrupted or has been
// updated often enough; then prints its report. The process's exit code.
int runDeviceCommand(const QStringList &arguments);

} // namespace vorn
