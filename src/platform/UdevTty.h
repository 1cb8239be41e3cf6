#pragma once

#include <QString>
#include <QStringList>

#include <libudev.h>

#include <memory>
#include <optional>

namespace vorn {

// Drops the reference that a libudev call returned.
struct UdevUnref
{
    void operator()(udev *object) const { udev_unref(object); }
    void operator()(udev_device *object) const { udev_device_unref(object); }
    void operator()(udev_enumerate *object) const { udev_enumerate_unref(object); }
    void operator()(udev_monitor *object) const { udev_monitor_unref(object); }
};
template <typename Object>
using UdevPointer = std::unique_ptr<Object, UdevUnref>;

// What udev knows about a serial port that is backed by hardware.
struct UdevTty
{
    enum class Family { UsbSerial, CdcAcm, Other };

    QString kernelName;      // "ttyUSB0"; one port at a time has it
    QString sysPath;         // the port's path in /sys
    QString node;            // "/dev/ttyUSB0"
    QStringList stableLinks; // links below /dev/serial: by-id before by-path
    Family family = Family::Other;
    QString adapter;      // the same for all ports of one USB adapter; else empty
    QString usbPath;      // the adapter's position on the bus, such as "1-2.3"; else empty
    QString serialNumber; // of the adapter, usable in a name; empty if it has none
    int number = 0;       // distinguishes the adapter's ports
    bool oneOfSeveral = false;

    // Whether this is the same port of the same adapter, and not one that replaced it.
    bool isSamePort(const UdevTty &other) const
    {
        return kernelName == other.kernelName && sysPath == other.sysPath &&
               serialNumber == other.serialNumber;
    }
};

// Reads a tty device; nullopt if it is not backed by hardware: consoles, pseudo-terminals, and
// ports of the legacy driver without a chip (sysfs `type` 0).
std::optional<UdevTty> readUdevTty(udev_device *device);

} // namespace vorn
