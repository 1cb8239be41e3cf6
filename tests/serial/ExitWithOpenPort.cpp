// exitwithopenport TERMINAL return|exit|without-manager: opens the terminal, sends "open", and when
// something comes back, ends in that way with the port open.
#include "serial/ORSSerialPortManager.h"
#include "tests/support/TestRegistry.h"

#include <QCoreApplication>

#include <cstdlib>

namespace {

// Lives until the static objects are destroyed.
ORSSerialPortPtr openPort;

struct EndingDelegate final : ORSSerialPortDelegate
{
    void serialPortWasRemovedFromSystem(ORSSerialPort &port) override { port.sendData("removed"); }
    void serialPortDidReceiveData(ORSSerialPort &, const QByteArray &) override
    {
        if (exits)
            std::exit(0); // out of the running event loop
        QCoreApplication::quit();
    }
    // Makes the port's thread wait for the main thread.
    void serialPortWasClosed(ORSSerialPort &) override {}

    bool exits = false;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const auto device = std::make_shared<vorn::SerialDevice>();
    device->calloutDevice = QCoreApplication::arguments().value(1);
    const QString way = QCoreApplication::arguments().value(2);
    EndingDelegate delegate;
    delegate.exits = way == u"exit";

    if (way == u"without-manager") {
        openPort = ORSSerialPort::serialPortWithDevice(device);
    } else {
        vorn::SerialDeviceRegistry::setSystem(
            std::make_unique<vorn::TestRegistry>(vorn::SerialDeviceRegistry::Devices{device}));
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
