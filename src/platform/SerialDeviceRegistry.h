#pragma once

#include <QList>
#include <QString>

#include <memory>

namespace vorn {

// One serial device as the registry knows it. Immutable: a device that comes back is a new record.
struct SerialDevice
{
    QString calloutDevice;  // the device node; what is opened to talk to the device
    QString dialinDevice;   // a path that stays the same when nodes are renumbered, else the node
    QString ttyDevice;      // the display name: base name and suffix together
    QString ttyBaseName;    // "usbserial-", "usbmodem-", or the first part of the kernel's name
    QString ttySuffix;      // serial number or place of the adapter, or the kernel's number
    QString adapterMaker{}; // of a USB adapter, as udev names it; else empty
    QString adapterModel{};
    QString adapterSerialNumber{};
    QString clientType = QStringLiteral("IOSerialStream"); // the kind of serial client
};

// A reference to a device; null means no device. It stays valid after the device is gone.
using SerialDeviceHandle = std::shared_ptr<const SerialDevice>;

// The system's serial devices, and events when they come and go. Main thread only, except
// devices().
class SerialDeviceRegistry
{
public:
    using Devices = QList<SerialDeviceHandle>;

    // Called in the main thread's event loop with each batch of added (removed) devices. A batch
    // may hold a device that devices() has returned before.
    class Observer
    {
    public:
        virtual void serialPortsWerePublished(const Devices &devices) = 0;
        virtual void serialPortsWereTerminated(const Devices &devices) = 0;

    protected:
        ~Observer() = default;
    };

    SerialDeviceRegistry() = default;
    virtual ~SerialDeviceRegistry() = default;
    SerialDeviceRegistry(const SerialDeviceRegistry &) = delete;
    SerialDeviceRegistry &operator=(const SerialDeviceRegistry &) = delete;

    // The devices that are present now. Opens none. Any thread.
    virtual Devices devices() const = 0;

    // Reports changes to the observer from now on. It replaces an earlier one and must exist as
    // long as there are events. False if this system has no such events.
    virtual bool watch(Observer &observer) = 0;

    // The registry that the process uses: udev's, unless another was installed before first use.
    static SerialDeviceRegistry &system();
    static void setSystem(std::unique_ptr<SerialDeviceRegistry> registry);
};

} // namespace vorn
