#include "app/Translations.h"
#include "cli/DeviceChoice.h"
#include "cli/DeviceCommand.h"
#include "cli/Download.h"
#include "cli/JsonOutput.h"
#include "cli/Station.h"
#include "cli/TextOutput.h"
#include "firmware/FirmwareModels.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "platform/ExitLimit.h"
#include "platform/FileDescriptor.h"
#include "platform/QuitSignals.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstring>

namespace {

using namespace vorn;

std::unique_ptr<Output> outputFor(const CliOptions &options)
{
    if (options.json)
        return std::make_unique<JsonOutput>();
    return std::make_unique<TextOutput>(options.verbose);
}

int listDevices(Output &output)
{
    const auto devices = SerialDeviceRegistry::system().devices();
    for (const SerialDeviceHandle &device : devices)
        output.showDevice(*device);
    if (devices.isEmpty())
        output.note(explain(Cause::NoDevice).terminalText());
    return kDone;
}

int listFirmware(const CliOptions &options, Output &output)
{
    const FirmwareScan scan = scanFirmwareFolder();
    if (scan.isUnreadable()) {
        const Explanation why = problemOfFolder(options, scan.error);
        output.showResult({.why = why});
        return exitCodeOf(why);
    }
    QStringList files = scan.files;
    if (options.model)
        files = firmwareForModel(files, *options.model);
    files.sort();
    const QDir folder(QDir(cachesDirectory()).filePath(kFirmwareFolderName));
    for (QString &file : files)
        file = folder.filePath(file);
    output.showFiles(files);
    if (scan.files.isEmpty())
        output.note(problemOfFolder(options, scan.error).terminalText());
    else if (files.isEmpty())
        output.note(
            explain(Cause::NoFirmwareForModel, {QString::number(*options.model)}).terminalText());
    return kDone;
}

// Runs a command that works in the event loop.
template <typename Command>
int run(const CliOptions &options, Output &output, QuitSignals &quitSignals)
{
    Command command(options, output);
    // The files that it reads may be on a network file system that hangs.
    quitSignals.letKill();
    if (const auto failed = command.prepare())
        return *failed;
    quitSignals.watch(command);
    command.start();
    const int exitCode = QCoreApplication::exec();
    quitSignals.letKill();
    return exitCode;
}

int run(const CliOptions &options, Output &output, QuitSignals &quitSignals)
{
    switch (options.command) {
    case CliCommand::Download:
        return run<Download>(options, output, quitSignals);
    case CliCommand::Watch:
        return run<Station>(options, output, quitSignals);
    default:
        return run<DeviceCommand>(options, output, quitSignals);
    }
}

// A file that is opened later, a port even, must not get the number of a standard stream that the
// caller has closed. Writing to such a stream still fails.
void occupyStandardStreams()
{
    FileDescriptor next;
    do
        next.release();
    while ((next = FileDescriptor(::open("/dev/null", O_RDONLY))).isValid() &&
           next.get() <= STDERR_FILENO);
}

} // namespace

int main(int argc, char **argv)
{
    occupyStandardStreams();
    // Settings, packages and logs are for the user alone, whatever the umask that was inherited.
    ::umask(077);
    QCoreApplication::setOrganizationName(QStringLiteral("Vorn"));
    // The window's, so that both have the same settings.
    QCoreApplication::setApplicationName(QStringLiteral("vornupdater"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VORN_VERSION));
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0)
        return exitCodeAfterOutput(kDone, print(stdout, versionLine()));

    // A reader of the output that goes away does not end an update.
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication application(argc, argv);
    installTranslations();
    int exitCode = kDone;
    const auto options = readCliOptions(QCoreApplication::arguments(), exitCode);
    if (!options)
        return exitCode;
    // What the program has to say about a failure, its one line says.
    QLoggingCategory::setFilterRules(options->verbose ? QStringLiteral("vorn.*=true")
                                                      : QStringLiteral("vorn.*=false"));
    const bool lists =
        options->command == CliCommand::List || options->command == CliCommand::Firmware;
    // The caches may be on a network file system that hangs: an image from elsewhere does not need
    // them, and until the signals are taken over Ctrl-C ends the program.
    if (options->imagePath.isNull() && options->command != CliCommand::List &&
        options->command != CliCommand::Info)
        StagingFolder::recoverInterruptedPublish();
    // A signal ends what only reads or lists at once; what works in the event loop handles it.
    // Before the first thread.
    std::optional<QuitSignals> quitSignals;
    if (!lists)
        quitSignals.emplace();
    if (!startQueues())
        return kUsage;
    const QString unwatched = installDeviceRegistry(options->common.deviceDirectory);
    if (!unwatched.isEmpty() && options->command == CliCommand::Watch) {
        print(stderr, unwatched + u'\n');
        return kUsage;
    }
    const auto output = outputFor(*options);
    if (::geteuid() == 0)
        output->note(explain(Cause::RunsAsRoot).terminalText());
    if (quitSignals)
        exitCode = run(*options, *output, *quitSignals);
    else if (options->command == CliCommand::List)
        exitCode = listDevices(*output);
    else
        exitCode = listFirmware(*options, *output);
    exitCode = exitCodeAfterOutput(exitCode, output->finish());
    limitExit(exitCode);
    return exitCode;
}
