#pragma once

#include "platform/SerialDeviceRegistry.h"
#include "serial/ORSSerialPort.h"

#include <QList>
#include <QObject>
#include <QString>

using ORSSerialPortList = QList<ORSSerialPortPtr>;

// Notifications on the default notification centre when devices came (went), and the key under
// which their user information holds the ports (an ORSSerialPortList). Ports of a removal are new
// objects: find the port that you hold by isEqual().
inline const QString ORSSerialPortWasConnectedNotification =
    QStringLiteral("ORSSerialPortWasConnectedNotification");
inline const QString ORSSerialPortWasDisconnectedNotification =
    QStringLiteral("ORSSerialPortWasDisconnectedNotification");
inline const QString ORSConnectedSerialPortsKey = QStringLiteral("ORSConnectedSerialPortsKey");
inline const QString ORSDisconnectedSerialPortsKey =
    QStringLiteral("ORSDisconnectedSerialPortsKey");

// The process's list of the serial devices that are present, kept current as they come and go. Main
// thread only. At the process's end, open ports are closed and their lines put back.
class ORSSerialPortManager : public QObject, private vorn::SerialDeviceRegistry::Observer
{
    Q_OBJECT
    Q_PROPERTY(ORSSerialPortList availablePorts READ availablePorts WRITE setAvailablePorts NOTIFY
                   availablePortsChanged)

public:
    // The one instance, made (and the devices enumerated) at the first call.
    static ORSSerialPortManager &sharedSerialPortManager();

    // In the order in which they were found.
    ORSSerialPortList availablePorts() const { return m_availablePorts; }
    void setAvailablePorts(const ORSSerialPortList &ports);
    ORSSerialPortList portsToReopenAfterSleep() const { return m_portsToReopenAfterSleep; }

    // To be called when the system goes to sleep and after it woke: open ports are closed and
    // opened again, in the order in which they were closed.
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
