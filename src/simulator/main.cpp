#include "simulator/CommandOptions.h"
#include "simulator/SampleFirmware.h"

#include <QCoreApplication>

#include <sys/stat.h>

#include <csignal>
#include <cstdio>

using namespace vorn;

namespace {

constexpr const char *kUsage =
    "Usage: vornsim COMMAND [options]\n"
    "Simulated devices and servers for the firmware updater.\n"
    "\n"
    "Commands:\n"
    "  device                a device: a boot loader on a pseudo-terminal\n"
    "  package-server        an HTTPS server for firmware packages on this machine\n"
    "  sample-firmware DIR   fill a folder with sample firmware images\n"
    "  sample-package FILE   write a package of sample firmware\n"
    "\n"
    "\"vornsim COMMAND --help\" shows a command's options, with examples.\n";

int writeSampleFolder(const QString &folder)
{
    QString problem;
    if (!writeSampleFirmware(folder, &problem))
        throw CommandFailure{kExitFailure, problem};
    return kExitSuccess;
}

int writeSamplePackage(const QString &file)
{
    const QByteArray package = samplePackage();
    if (package.isEmpty())
        throw CommandFailure{kExitFailure, QStringLiteral("no temporary file can be written")};
    return writeFile(file, package) ? kExitSuccess : kExitFailure;
}

int run(const QString &command, const QStringList &arguments)
{
    if (command == u"device")
        return runDevice(arguments);
    if (command == u"package-server")
        return runPackageServer(arguments);
    for (const QString &word : {command, arguments.value(0)}) {
        if (word == u"--help" || word == u"-h") {
            std::fputs(kUsage, stdout);
            return kExitSuccess;
        }
    }
    const bool isSample = command == u"sample-firmware" || command == u"sample-package";
    if (isSample && arguments.size() == 1)
        return command == u"sample-firmware" ? writeSampleFolder(arguments.first())
                                             : writeSamplePackage(arguments.first());
    printNote(command.isEmpty() ? QStringLiteral("a command is needed")
              : isSample        ? QStringLiteral("1 argument is needed")
                                : QStringLiteral("\"%1\" is not a command").arg(command));
    std::fputs(kUsage, stderr);
    return kExitUsage;
}

} // namespace

int main(int argc, char **argv)
{
    ::umask(077);
    // The report file has to be written even if nobody reads the standard output any more.
    std::signal(SIGPIPE, SIG_IGN);
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    try {
        return run(arguments.value(0), arguments.mid(1));
    } catch (const CommandFailure &failure) {
        printNote(failure.text);
        return failure.status;
    }
}
