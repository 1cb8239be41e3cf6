#pragma once

#include "app/SharedOptions.h"

#include <QStringList>

#include <optional>

namespace vorn {

// Reads the arguments of the program with the window. Nothing when the program is to end at once
// with `exitCode`, after help, the version or a message was printed.
std::optional<CommandLine> readCommandLine(const QStringList &arguments, int &exitCode);

} // namespace vorn
