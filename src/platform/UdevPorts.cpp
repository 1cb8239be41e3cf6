#include "platform/UdevPorts.h"

#include "platform/SerialDeviceName.h"

#include <algorithm>

namespace vorn {

namespace {

bool isTaken(const QString &name, const std::vector<UdevPort> &ports)
{
    return std::any_of(ports.begin(), ports.end(), [&](const UdevPort &port) {
        return port.device && port.device->ttyDevice == name;
    });
}

QString nameFor(const UdevTty &tty, const std::vector<UdevPort> &all)
{
    if (tty.family == UdevTty::Family::Other)
        return tty.kernelName;
    const auto isOfAdapter = [&](const UdevPort &port) { return port.tty.adapter == tty.adapter; };
    const auto hasSameNumber = [&](const UdevPort &port) {
        return port.tty.family == tty.family && port.tty.serialNumber == tty.serialNumber &&
               !isOfAdapter(port);
    };
    const bool isNamedAfterSerialNumber =
        !tty.serialNumber.isEmpty() && std::none_of(all.begin(), all.end(), hasSameNumber);
    const bool isOneOfSeveral =
        tty.oneOfSeveral ||
        (!tty.adapter.isEmpty() && std::count_if(all.begin(), all.end(), isOfAdapter) > 1);
    const QString numberSuffix = isOneOfSeveral ? u'-' + QString::number(tty.number) : QString();

    const QString prefix = tty.family == UdevTty::Family::UsbSerial ? QStringLiteral("usbserial-")
                                                                    : QStringLiteral("usbmodem-");
    for (const QString &id :
         {isNamedAfterSerialNumber ? tty.serialNumber : QString(), tty.usbPath}) {
        QString name = prefix + id + numberSuffix;
        if (!id.isEmpty() && !isTaken(name, all))
            return name;
    }
    return prefix + tty.kernelName;
}

// The first stable link that leads to this port alone; adapters with the same serial number claim
// the same link.
QString stableLinkFor(const UdevTty &tty, const std::vector<UdevPort> &all)
{
    for (const QString &link : tty.stableLinks) {
        const auto claimants = std::count_if(all.begin(), all.end(), [&](const UdevPort &port) {
            return port.tty.stableLinks.contains(link);
        });
        if (claimants <= 1)
            return link;
    }
    return tty.node;
}

} // namespace

std::vector<UdevPort> nameUdevPorts(const std::vector<UdevPort> &known,
                                    const std::vector<UdevTty> &present)
{
    std::vector<UdevPort> ports;
    for (const UdevTty &tty : present) {
        const auto same = std::find_if(known.begin(), known.end(), [&](const UdevPort &port) {
            return port.tty.isSamePort(tty);
        });
        ports.push_back({tty, same != known.end() ? same->device : nullptr});
    }
    for (UdevPort &port : ports) {
        if (port.device)
            continue;
        const SerialDeviceName name = splitSerialDeviceName(nameFor(port.tty, ports));
        port.device = std::make_shared<SerialDevice>(
            SerialDevice{.calloutDevice = port.tty.node,
                         .dialinDevice = stableLinkFor(port.tty, ports),
                         .ttyDevice = name.full(),
                         .ttyBaseName = name.baseName,
                         .ttySuffix = name.suffix});
    }
    return ports;
}

} // namespace vorn
