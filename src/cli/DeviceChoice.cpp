#include "cli/DeviceChoice.h"

#include "app/StatusTexts.h"
#include "firmware/FirmwareFolder.h"
#include "platform/Directories.h"
#include "update/FirmwareImage.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

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
    const FirmwareScan scan = scanFirmwareFolder();
    return scan.files.isEmpty() ? problemOfFolder(options, scan.error) : Explanation();
}

Explanation problemOfFolder(const CliOptions &options, int error)
{
    return explainNoFirmware(QDir(cachesDirectory()).filePath(kFirmwareFolderName), error,
                             options.common.packages.isConfigured());
}

ORSSerialPortList chosenDevices(const CliOptions &options, Explanation &problem)
{
    ORSSerialPortList chosen;
    for (const QString &name : options.devices) {
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
    } else if (chosen.size() > 1 && !options.all) {
        QStringList names;
        for (const ORSSerialPortPtr &port : std::as_const(chosen))
            names.append(port->name());
        problem = explain(Cause::SeveralDevices, {names.join(QStringLiteral(", "))});
    }
    return chosen;
}

} // namespace vorn
