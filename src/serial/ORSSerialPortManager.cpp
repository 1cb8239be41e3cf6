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

bool containsEqual(const ORSSerialPortList &ports, const ORSSerialPort &port)
{
    return std::any_of(ports.begin(), ports.end(),
                       [&](const ORSSerialPortPtr &other) { return other->isEqual(port); });
}

} // namespace

ORSSerialPortManager &ORSSerialPortManager::sharedSerialPortManager()
{
    // What the manager needs at the process's end is made before it, and so outlives it.
    static const bool queuesExist = [] {
        vorn::MainQueue::instance();
        vorn::LivePorts::instance();
        NotificationCenter::defaultCenter();
        SerialDeviceRegistry::system();
        return true;
    }();
    Q_UNUSED(queuesExist)
    static ORSSerialPortManager manager;
    // After the manager was made, so that the handler runs before it is destroyed.
    static const bool registered = [] {
        manager.registerForNotifications();
        return true;
    }();
    Q_UNUSED(registered)
    return manager;
}

ORSSerialPortManager::ORSSerialPortManager()
{
    retrieveAvailablePortsAndRegisterForChangeNotifications();
}

void ORSSerialPortManager::retrieveAvailablePortsAndRegisterForChangeNotifications()
{
    SerialDeviceRegistry &registry = SerialDeviceRegistry::system();
    if (!registry.watch(*this))
        return;
    ORSSerialPortList ports;
    for (const vorn::SerialDeviceHandle &device : registry.devices())
        if (const ORSSerialPortPtr port = ORSSerialPort::serialPortWithDevice(device))
            ports.append(port);
    setAvailablePorts(ports);
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
    ORSSerialPortList connected;
    for (const vorn::SerialDeviceHandle &device : devices) {
        const ORSSerialPortPtr port = ORSSerialPort::serialPortWithDevice(device);
        if (!containsEqual(m_availablePorts, *port))
            connected.append(port);
    }
    setAvailablePorts(m_availablePorts + connected);
    NotificationCenter::defaultCenter().post(
        ORSSerialPortWasConnectedNotification,
        {{ORSConnectedSerialPortsKey, QVariant::fromValue(connected)}});
}

// Only new port objects are told and announced; whoever holds an open port finds it by equality.
void ORSSerialPortManager::serialPortsWereTerminated(const SerialDeviceRegistry::Devices &devices)
{
    ORSSerialPortList disconnected;
    for (const vorn::SerialDeviceHandle &device : devices)
        disconnected.append(ORSSerialPort::serialPortWithDevice(device));
    for (const ORSSerialPortPtr &port : std::as_const(disconnected))
        port->cleanupAfterSystemRemoval();
    ORSSerialPortList left;
    for (const ORSSerialPortPtr &port : std::as_const(m_availablePorts))
        if (!containsEqual(disconnected, *port))
            left.append(port);
    setAvailablePorts(left);
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
