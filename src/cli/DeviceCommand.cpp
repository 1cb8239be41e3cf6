#include "cli/DeviceCommand.h"

#include "app/StatusTexts.h"
#include "firmware/FirmwareFolder.h"
#include "platform/Directories.h"
#include "update/FirmwareImage.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <csignal>

namespace vorn {
namespace {

std::chrono::milliseconds scaled(std::chrono::milliseconds time, double scale)
{
    return std::chrono::round<std::chrono::milliseconds>(
        std::chrono::duration<double, std::milli>(time) * scale);
}

ORSSerialPortList availablePorts()
{
    return ORSSerialPortManager::sharedSerialPortManager().availablePorts();
}

// The device with that name or node.
ORSSerialPortPtr portCalled(const QString &name)
{
    const QString node = QFileInfo(name).canonicalFilePath();
    const ORSSerialPortList ports = availablePorts();
    const auto found = std::find_if(ports.begin(), ports.end(), [&](const ORSSerialPortPtr &port) {
        return port->name() == name || port->path() == name ||
               (!node.isEmpty() && QFileInfo(port->path()).canonicalFilePath() == node);
    });
    return found == ports.end() ? nullptr : *found;
}

} // namespace

ORSSerialPortList offeredDevices()
{
    ORSSerialPortList ports = availablePorts();
    ports.removeIf([](const ORSSerialPortPtr &port) {
        return !port->name().startsWith(texts::kDeviceNamePrefix);
    });
    return ports;
}

DeviceTask taskOf(const CliOptions &options)
{
    DeviceTask task;
    task.updates = options.command != CliCommand::Info;
    task.imagePath = options.imagePath;
    task.takesAnyModel = options.force;
    task.retries = options.retries;
    for (auto *limit :
         {&task.parameters.answerLimit, &task.parameters.eraseLimit, &task.parameters.answerGap})
        *limit = scaled(*limit, options.timeoutScale);
    return task;
}

Explanation problemOfImage(const CliOptions &options)
{
    if (!options.imagePath.isNull()) {
        UpdateResult check;
        check.failure = checkFirmwareImage(options.imagePath);
        return explainUpdate(check);
    }
    const auto scan = scanFirmwareFolder();
    if (scan && !scan->files.isEmpty())
        return {};
    return explain(options.common.packages.isConfigured() ? Cause::NoFirmware
                                                          : Cause::NoFirmwareNoServer,
                   {QDir(cachesDirectory()).filePath(kFirmwareFolderName)});
}

DeviceCommand::DeviceCommand(const CliOptions &options, Output &output)
    : m_options(options), m_output(output), m_runs(taskOf(options), output, *this)
{
}

std::optional<ExitCode> DeviceCommand::start()
{
    Explanation problem;
    if (m_options.command == CliCommand::Update)
        problem = problemOfImage(m_options);
    ORSSerialPortList ports;
    if (problem.cause == Cause::None)
        ports = chosenDevices(problem);
    if (problem.cause != Cause::None) {
        m_output.showResult({.why = problem});
        return exitCodeOf(problem);
    }
    for (const ORSSerialPortPtr &port : ports)
        m_runs.start(port);
    return std::nullopt;
}

ORSSerialPortList DeviceCommand::chosenDevices(Explanation &problem) const
{
    ORSSerialPortList chosen;
    for (const QString &name : m_options.devices) {
        const ORSSerialPortPtr port = portCalled(name);
        if (!port) {
            problem = explain(Cause::DeviceNotFound, {name});
            return {};
        }
        if (!chosen.contains(port))
            chosen.append(port);
    }
    if (!chosen.isEmpty())
        return chosen;

    chosen = offeredDevices();
    if (chosen.isEmpty()) {
        const ORSSerialPortList others = availablePorts();
        problem = others.isEmpty()
                      ? explain(Cause::NoDevice)
                      : explain(Cause::UnsuitableDevice, {others.constFirst()->name()});
    } else if (chosen.size() > 1 && !m_options.all) {
        QStringList names;
        for (const ORSSerialPortPtr &port : std::as_const(chosen))
            names.append(port->name());
        problem = explain(Cause::SeveralDevices, {names.join(QStringLiteral(", "))});
    }
    return chosen;
}

bool DeviceCommand::quitSignalDidArrive(int signal)
{
    if (signal == SIGINT && m_options.command == CliCommand::Update &&
        !std::exchange(m_wasWarned, true)) {
        m_output.note(interruptWarning());
        return false;
    }
    m_runs.interrupt();
    return true;
}

void DeviceCommand::allRunsDidEnd()
{
    QCoreApplication::exit(m_runs.exitCode());
}

} // namespace vorn
