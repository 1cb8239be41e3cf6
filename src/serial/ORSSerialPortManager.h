#pragma once

#include "platform/SerialDeviceRegistry.h"
#include "serial/ORSSerialPort.h"

#include <QList>
#include <QObject>
#include <QString>

using ORSSerialPortList = QList<ORSSerialPortPtr>;

// Notifications on the default notification centre when devices were added (removed), and the key
// in their user information under which the ports are found (an ORSSerialPortList). The ports of a
// removal are new objects: find the port that you hold by isEqual().
inline const QString ORSSerialPortWasConnectedNotification =
    QStringLiteral("ORSSerialPortWasConnectedNotification");
inline const QString ORSSerialPortWasDisconnectedNotification =
    QStringLiteral("ORSSerialPortWasDisconnectedNotification");
inline const QString ORSConnectedSerialPortsKey = QStringLiteral("ORSConnectedSerialPortsKey");
inline const QString ORSDisconnectedSerialPortsKey =
    QStringLiteral("ORSDisconnectedSerialPortsKey");

// The process's list of serial devices, kept current as they come and go. Main thread only. When
// the process ends, open ports are closed and their lines restored.
class ORSSerialPortManager : public QObject, private vorn::SerialDeviceRegistry::Observer
{
    Q_OBJECT
    Q_PROPERTY(ORSSerialPortList availablePorts READ availablePorts WRITE setAvailablePorts NOTIFY
                   availablePortsChanged)

public:
    // The only instance. The first call creates it and enumerates the devices.
    static ORSSerialPortManager &sharedSerialPortManager();

    // In order of discovery.
    ORSSerialPortList availablePorts() const { return m_availablePorts; }
    void setAvailablePorts(const ORSSerialPortList &ports);
    ORSSerialPortList portsToReopenAfterSleep() const { return m_portsToReopenAfterSleep; }

    // Call these before the system sleeps and after it wakes: open ports are closed, and opened
    // again in the order in which they were closed.
    void systemWillSleep();
    void systemDidWake();

signals:
    void availablePortsChanged();

private:
    ORSSerialPortManager();
    void serialPortsWerePublished(const vorn::SerialDeviceRegistry::Devices &devices) override;
    void serialPortsWereTerminated(const vorn::SerialDeviceRegistry::Devices &devices) override;
    void retrieveAvailablePortsAndRegisterForChangeNotifications();
    void registerForNotifications();

    ORSSerialPortList m_availablePorts;
    ORSSerialPortList m_portsToReopenAfterSleep;
};
