#include "serial/ORSSerialPortManager.h"

#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "serial/LivePorts.h"
#include "serial/SerialLog.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

using vorn::NotificationCenter;
using vorn::SerialDeviceRegistry;

namespace {

ORSSerialPortList portsFor(const SerialDeviceRegistry::Devices &devices)
{
    ORSSerialPortList ports;
    for (const vorn::SerialDeviceHandle &device : devices)
        ports.append(ORSSerialPort::serialPortWithDevice(device));
    return ports;
}

ORSSerialPortList without(ORSSerialPortList ports, const ORSSerialPortList &others)
{
    ports.removeIf([&](const ORSSerialPortPtr &port) {
        const auto isEqual = [&](const ORSSerialPortPtr &other) { return other->isEqual(*port); };
        return std::any_of(others.begin(), others.end(), isEqual);
    });
    return ports;
}

} // namespace

ORSSerialPortManager &ORSSerialPortManager::sharedSerialPortManager()
{
    static ORSSerialPortManager manager;
    // After the manager is complete, so that the handler runs before it is destroyed.
    [[maybe_unused]] static const bool registered = (manager.registerForNotifications(), true);
    return manager;
}

ORSSerialPortManager::ORSSerialPortManager()
{
    // Needed at the process's end: created before the manager is complete, they outlive it.
    vorn::MainQueue::instance();
    vorn::LivePorts::instance();
    NotificationCenter::defaultCenter();
    retrieveAvailablePortsAndRegisterForChangeNotifications();
}

void ORSSerialPortManager::retrieveAvailablePortsAndRegisterForChangeNotifications()
{
    SerialDeviceRegistry &registry = SerialDeviceRegistry::system();
    if (registry.watch(*this))
        setAvailablePorts(portsFor(registry.devices()));
}

void ORSSerialPortManager::registerForNotifications()
{
    const int result = std::atexit([] {
        ORSSerialPortManager &manager = sharedSerialPortManager();
        for (const ORSSerialPortPtr &port : manager.availablePorts())
            port->cleanupAfterSystemRemoval();
        manager.setAvailablePorts({});
    });
    if (result != 0) {
        qCWarning(vorn::logSerial,
                  "ORSSerialPort was unable to register its termination handler for serial port "
                  "cleanup: %i",
                  errno);
    }
}

void ORSSerialPortManager::setAvailablePorts(const ORSSerialPortList &ports)
{
    m_availablePorts = ports;
    emit availablePortsChanged();
}

void ORSSerialPortManager::serialPortsWerePublished(const SerialDeviceRegistry::Devices &devices)
{
    const ORSSerialPortList connected = without(portsFor(devices), m_availablePorts);
    setAvailablePorts(m_availablePorts + connected);
    NotificationCenter::defaultCenter().post(
        ORSSerialPortWasConnectedNotification,
        {{ORSConnectedSerialPortsKey, QVariant::fromValue(connected)}});
}

// The clean-up and the notification concern new port objects; the holder of an open port finds it
// by equality.
void ORSSerialPortManager::serialPortsWereTerminated(const SerialDeviceRegistry::Devices &devices)
{
    const ORSSerialPortList disconnected = portsFor(devices);
    for (const ORSSerialPortPtr &port : disconnected)
        port->cleanupAfterSystemRemoval();
    setAvailablePorts(without(m_availablePorts, disconnected));
    NotificationCenter::defaultCenter().post(
        ORSSerialPortWasDisconnectedNotification,
        {{ORSDisconnectedSerialPortsKey, QVariant::fromValue(disconnected)}});
}

void ORSSerialPortManager::systemWillSleep()
{
    for (const ORSSerialPortPtr &port : std::as_const(m_availablePorts))
        if (port->isOpen() && port->close())
            m_portsToReopenAfterSleep.append(port);
}

void ORSSerialPortManager::systemDidWake()
{
    const ORSSerialPortList closed = m_portsToReopenAfterSleep;
    for (const ORSSerialPortPtr &port : closed) {
        port->open();
        m_portsToReopenAfterSleep.removeOne(port);
    }
}
