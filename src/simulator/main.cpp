#include "simulator/Command.h"

#include <QCoreApplication>

#include <cstdio>

using namespace vorn;

namespace {

constexpr const char *Usage =
    "Usage: vornsim COMMAND [options]\n"
    "Simulated surroundings for the firmware updater.\n"
    "\n"
    "Commands:\n"
    "  device           a device: a boot loader on a pseudo-terminal\n"
    "  package-server   an HTTPS server for firmware packages on this machine\n"
    "  sample-firmware  fill a folder with sample firmware images\n"
    "  sample-package   write a package of sample firmware\n"
    "\n"
    "\"vornsim COMMAND --help\" shows a command's options, with examples.\n";

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    const QString command = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (command == QLatin1String("device"))
        return runDevice(arguments);
    if (command == QLatin1String("package-server"))
        return runPackageServer(arguments);
    if (command == QLatin1String("sample-firmware"))
        return runSampleFirmware(arguments);
    if (command == QLatin1String("sample-package"))
        return runSamplePackage(arguments);
    if (command == QLatin1String("--help") || command == QLatin1String("-h")) {
        std::fputs(Usage, stdout);
        return Success;
    }
    printNote(command.isEmpty() ? QStringLiteral("a command is needed")
                                : QStringLiteral("\"%1\" is no command").arg(command));
    std::fputs(Usage, stderr);
    return UsageError;
}
