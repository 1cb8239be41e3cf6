#pragma once

#include "firmware/PackageLocation.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <optional>

namespace vorn {

// What the program was asked for on its command line.
struct CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
public:
    QString deviceDirectory;  // empty: the system's devices only
    PackageLocation packages; // not configured without a package server
};

// Reads the arguments. Nothing when the program is to end at once with `exitCode`, after help, the
// version or a message was printed.
std::optional<CommandLine> readCommandLine(const QStringList &arguments, int &exitCode);

} // namespace vorn
