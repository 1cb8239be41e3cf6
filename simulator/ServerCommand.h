#pragma once

#include <QStringList>

namespace vorn {

// "vornsim package-server": serves a firmware package over HTTPS until it is interrupted; then
// prints its report. The process's exit code.
int runServerCommand(const QStringList &arguments);

} // namespace vorn
