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
#include "platform/MainQueue.h"
#include "platform/QuitSignals.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

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
    const auto scan = scanFirmwareFolder();
    QStringList files = scan ? scan->files : QStringList();
    const bool isEmpty = files.isEmpty();
    if (options.model)
        files = firmwareForModel(files, *options.model);
    files.sort();
    const QDir folder(QDir(cachesDirectory()).filePath(kFirmwareFolderName));
    for (QString &file : files)
        file = folder.filePath(file);
    output.showFiles(files);
    if (isEmpty)
        output.note(problemOfImage(options).terminalText());
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
    quitSignals.watch(command);
    if (const auto exitCode = command.start())
        return *exitCode;
    return QCoreApplication::exec();
}

int run(const CliOptions &options, QuitSignals &quitSignals)
{
    const auto output = outputFor(options);
    switch (options.command) {
    case CliCommand::List:
        return listDevices(*output);
    case CliCommand::Firmware:
        return listFirmware(options, *output);
    case CliCommand::Download:
        return run<Download>(options, *output, quitSignals);
    case CliCommand::Watch:
        return run<Station>(options, *output, quitSignals);
    case CliCommand::Info:
    case CliCommand::Update:
        break;
    }
    return run<DeviceCommand>(options, *output, quitSignals);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setOrganizationName(QStringLiteral("Vorn"));
    // The window's, so that both have the same settings.
    QCoreApplication::setApplicationName(QStringLiteral("vornupdater"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VORN_VERSION));
    if (argc == 2 && std::strcmp(argv[1], "--version") == 0) {
        print(stdout, versionLine());
        return kDone;
    }

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
    // The caches may be on a network file system that hangs: an image from elsewhere does not need
    // them, and until the signals are taken over Ctrl-C ends the program.
    if (options->imagePath.isNull() && options->command != CliCommand::List &&
        options->command != CliCommand::Info)
        StagingFolder::recoverInterruptedPublish();
    QuitSignals quitSignals;
    MainQueue::instance(); // belongs to this thread, whoever uses it first
    installDeviceRegistry(options->common.deviceDirectory);
    exitCode = run(*options, quitSignals);
    limitExit(exitCode);
    return exitCode;
}
