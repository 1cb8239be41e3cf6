// exitwithopenport TERMINAL return|exit|without-manager: opens the terminal, sends "open" there,
// and when something comes back, ends in that way with the port open.
#include "serial/ORSSerialPortManager.h"
#include "tests/support/TestRegistry.h"

#include <QCoreApplication>

#include <cstdlib>

namespace {

// Lives until the static objects are destroyed.
ORSSerialPortPtr openPort;

class EndingDelegate final : public ORSSerialPortDelegate
{
public:
    explicit EndingDelegate(bool exits) : m_exits(exits) {}
    void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
    void serialPortDidReceiveData(ORSSerialPort &, const QByteArray &) override
    {
        if (m_exits)
            std::exit(0); // out of the running event loop
        QCoreApplication::quit();
    }
    // That there is this method makes the port's thread wait for the main thread.
    void serialPortWasClosed(ORSSerialPort &) override {}

private:
    const bool m_exits;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    vorn::SerialDevice device;
    device.calloutDevice = arguments.value(1);
    const QString way = arguments.value(2);
    EndingDelegate delegate(way == u"exit");

    if (way == u"without-manager") {
        openPort =
            ORSSerialPort::serialPortWithDevice(std::make_shared<vorn::SerialDevice>(device));
    } else {
        vorn::SerialDeviceRegistry::setSystem(std::make_unique<vorn::TestRegistry>(
            vorn::SerialDeviceRegistry::Devices{std::make_shared<vorn::SerialDevice>(device)}));
        openPort = ORSSerialPortManager::sharedSerialPortManager().availablePorts().first();
    }
    openPort->setDelegate(&delegate);
    openPort->setNumberOfStopBits(2);
    openPort->open();
    openPort->sendData("open");
    if (way != u"without-manager")
        openPort.reset(); // the manager holds it
    return QCoreApplication::exec();
}
