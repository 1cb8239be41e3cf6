#include "simulator/CommandSupport.h"
#include "simulator/DeviceCommand.h"
#include "simulator/SampleFirmware.h"
#include "simulator/ServerCommand.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr const char *kHelp =
    R"(vornsim stands in for the hardware and the server that vornupdater talks to.

  vornsim device [OPTIONS]            a device's boot loader on a pseudo-terminal
  vornsim package-server [OPTIONS]    an HTTPS server for firmware packages on this machine
  vornsim sample-firmware DIR         write sample firmware files for every model into DIR

Each knows --help. A device and a window on it:

  mkdir -p /tmp/devices
  vornsim device --dir /tmp/devices --name usbserial-1 &
  vornupdater --device-dir /tmp/devices
)";

int writeSamples(const QStringList &arguments)
{
    if (arguments.size() != 2)
        return vorn::complainAboutUsage(QStringLiteral("sample-firmware takes one directory"));
    QString problem;
    return vorn::writeSampleFirmware(arguments[1], &problem) ? 0 : vorn::complain(problem);
}

} // namespace

int main(int argc, char **argv)
{
    vorn::blockInterruptions();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vornsim"));
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    const QString command = arguments.value(0);
    if (command == QLatin1StringView("device"))
        return vorn::runDeviceCommand(arguments);
    if (command == QLatin1StringView("package-server"))
        return vorn::runServerCommand(arguments);
    if (command == QLatin1StringView("sample-firmware"))
        return writeSamples(arguments);
    if (command == QLatin1StringView("--help") || command == QLatin1StringView("-h")) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    return vorn::complainAboutUsage(command.isEmpty()
                                        ? QStringLiteral("What is to be simulated?")
                                        : QStringLiteral("There is no command ") + command);
}
