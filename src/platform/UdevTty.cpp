#include "platform/UdevTty.h"

#include "platform/SerialDeviceName.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace vorn {

namespace {

QString property(udev_device *device, const char *key)
{
    return QString::fromUtf8(udev_device_get_property_value(device, key));
}

QString attribute(udev_device *device, const char *name)
{
    return device ? QString::fromUtf8(udev_device_get_sysattr_value(device, name)).trimmed()
                  : QString();
}

UdevTty::Family familyOf(udev_device *device, const QString &kernelName)
{
    udev_device *const parent = udev_device_get_parent(device);
    // The kernel uses these names for these families only.
    if (kernelName.startsWith(u"ttyUSB") ||
        (parent && qstrcmp(udev_device_get_subsystem(parent), "usb-serial") == 0))
        return UdevTty::Family::UsbSerial;
    if (kernelName.startsWith(u"ttyACM") || property(device, "ID_USB_DRIVER") == u"cdc_acm")
        return UdevTty::Family::CdcAcm;
    return UdevTty::Family::Other;
}

QStringList stableLinksOf(udev_device *device)
{
    QStringList links = property(device, "DEVLINKS").split(u' ', Qt::SkipEmptyParts);
    links.removeIf([](const QString &link) {
        return !link.startsWith(u"/dev/serial/by-id/") && !link.startsWith(u"/dev/serial/by-path/");
    });
    links.sort(); // "by-id" sorts before "by-path"
    return links;
}

// Counts the interfaces of a USB device that can be serial ports, in its configuration descriptors.
// The kernel sets up one interface after the other and reports the first port of an adapter before
// the last one exists; the descriptors are complete from the start.
int countSerialInterfaces(udev_device *usbDevice, UdevTty::Family family)
{
    QFile file(QFile::decodeName(udev_device_get_syspath(usbDevice)) +
               QStringLiteral("/descriptors"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray bytes = file.read(65536);
    constexpr char kConfigurationType = 2;
    constexpr char kInterfaceType = 4;
    constexpr char kCommunicationsClass = 2;
    constexpr char kAbstractControlModel = 2;
    constexpr char kVendorClass = '\xff';
    int count = 0;
    int configurations = 0;
    // Each descriptor begins with its length and its type.
    for (qsizetype at = 0; at + 1 < bytes.size();) {
        const auto length = static_cast<unsigned char>(bytes[at]);
        if (length < 2)
            break;
        if (bytes[at + 1] == kConfigurationType && ++configurations > 1)
            break;
        // Fields: length, type, number, alternate setting, endpoints, class, subclass, ...
        if (bytes[at + 1] == kInterfaceType && length >= 9 && at + 9 <= bytes.size() &&
            bytes[at + 3] == 0) {
            const char itsClass = bytes[at + 5];
            const bool isSerial =
                family == UdevTty::Family::CdcAcm
                    ? itsClass == kCommunicationsClass && bytes[at + 6] == kAbstractControlModel
                    : itsClass == kCommunicationsClass || itsClass == kVendorClass;
            count += isSerial ? 1 : 0;
        }
        at += length;
    }
    return count;
}

int countTtys(udev_device *usbDevice)
{
    const UdevPointer<udev_enumerate> list(udev_enumerate_new(udev_device_get_udev(usbDevice)));
    if (!list || udev_enumerate_add_match_parent(list.get(), usbDevice) < 0 ||
        udev_enumerate_add_match_subsystem(list.get(), "tty") < 0 ||
        udev_enumerate_scan_devices(list.get()) < 0)
        return 0;
    int count = 0;
    udev_list_entry *entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get()))++ count;
    return count;
}

void readUsbFacts(udev_device *device, UdevTty &tty)
{
    udev_device *const usbDevice =
        udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");

    // The port's own path still names its parents when they have been unplugged in the meantime.
    static const QRegularExpression adapterInPath(
        QStringLiteral("^(.*/(\\d+-\\d+(?:\\.\\d+)*))/\\2:\\d+\\.(\\d+)/"));
    const QRegularExpressionMatch inPath = adapterInPath.match(tty.sysPath);
    if (inPath.hasMatch()) {
        tty.adapter = inPath.captured(1);
        tty.usbPath = inPath.captured(2);
    } else if (usbDevice) {
        tty.adapter = QFile::decodeName(udev_device_get_syspath(usbDevice));
        tty.usbPath = QFile::decodeName(udev_device_get_sysname(usbDevice));
    } else if (const QString path = property(device, "ID_PATH"); !path.isEmpty()) {
        tty.adapter = path.left(path.lastIndexOf(u':')); // the interface follows it
        tty.usbPath = tty.adapter;
    }

    // udev omits serial numbers that it finds unusable; where its rules have not run, the device's
    // own string is used.
    const bool rulesRan = !property(device, "ID_SERIAL").isEmpty();
    QString serialNumber = property(device, "ID_SERIAL_SHORT");
    if (serialNumber.isEmpty() && !rulesRan)
        serialNumber = attribute(usbDevice, "serial");
    tty.serialNumber = cleanSerialNumber(serialNumber);

    // An adapter has one port on each of several interfaces, or several ports on one interface.
    bool known = false;
    int interfaceNumber = property(device, "ID_USB_INTERFACE_NUM").toInt(&known, 16);
    if (!known)
        interfaceNumber = inPath.captured(3).toInt();
    int portNumber = attribute(udev_device_get_parent(device), "port_number").toInt(&known);
    if (!known) {
        static const QRegularExpression portInLink(QStringLiteral("-port(\\d+)$"));
        for (const QString &link : tty.stableLinks)
            portNumber = std::max(portNumber, portInLink.match(link).captured(1).toInt());
    }
    tty.number = interfaceNumber + portNumber;
    tty.oneOfSeveral =
        usbDevice && (countSerialInterfaces(usbDevice, tty.family) > 1 || countTtys(usbDevice) > 1);
}

} // namespace

std::optional<UdevTty> readUdevTty(udev_device *device)
{
    UdevTty tty;
    tty.kernelName = QFile::decodeName(udev_device_get_sysname(device));
    tty.sysPath = QFile::decodeName(udev_device_get_syspath(device));
    tty.node = QFile::decodeName(udev_device_get_devnode(device));
    const bool hasHardware =
        udev_device_get_parent(device) || !property(device, "ID_BUS").isEmpty();
    if (tty.node.isEmpty() || !hasHardware || tty.sysPath.contains(u"/devices/virtual/") ||
        attribute(device, "type") == u"0")
        return std::nullopt;
    tty.family = familyOf(device, tty.kernelName);
    tty.stableLinks = stableLinksOf(device);
    if (tty.family != UdevTty::Family::Other)
        readUsbFacts(device, tty);
    return tty;
}

} // namespace vorn
