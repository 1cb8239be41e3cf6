#include "simulator/Command.h"
#include "simulator/SampleFirmware.h"
#include "simulator/StoredZip.h"

namespace vorn {

int runSampleFirmware(const QStringList &arguments)
{
    CommandLine line(QStringLiteral("sample-firmware"),
                     QStringLiteral("Fills a folder with firmware images for every family of "
                                    "models; no device could run them."),
                     QStringLiteral("Example:\n  vornsim sample-firmware ~/.cache/VornUpdate2\n"));
    line.addArgument("DIR", "The folder; it is made when it does not exist.");
    if (!line.parse(arguments))
        return Success;
    const QString folder = line.argument();
    if (line.failed())
        return line.complain();
    QString problem;
    if (writeSampleFirmware(folder, &problem))
        return Success;
    printNote(problem);
    return Failure;
}

int runSamplePackage(const QStringList &arguments)
{
    CommandLine line(QStringLiteral("sample-package"),
                     QStringLiteral("Writes a package of sample firmware, as the package server "
                                    "serves it with --sample-package."),
                     QStringLiteral("Example:\n  vornsim sample-package VornUpdate2.zip\n"));
    line.addArgument("FILE", "The zip archive to write.");
    if (!line.parse(arguments))
        return Success;
    const QString file = line.argument();
    if (line.failed())
        return line.complain();
    return writeFile(file, samplePackage()) ? Success : Failure;
}

} // namespace vorn
