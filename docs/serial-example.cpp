// Opens a serial port, listens for lines, asks for an identification, and ends when the device is
// unplugged or does not answer.
#include "serial/ORSSerialPacketDescriptor.h"
#include "serial/ORSSerialPort.h"
#include "serial/ORSSerialPortManager.h"
#include "serial/ORSSerialRequest.h"

#include <QCoreApplication>

#include <cstdio>

class Terminal : public ORSSerialPortDelegate
{
public:
    explicit Terminal(const ORSSerialPortPtr &port) : m_port(port)
    {
        m_port->setDelegate(this);
        m_port->setBaudRate(115200);
        m_port->open(); // a failure arrives in serialPortDidEncounterError()
    }

    void serialPortWasOpened(ORSSerialPort &) override
    {
        // Every line that ends with CR LF and begins with "!", up to 64 bytes long.
        m_port->startListeningForPacketsMatchingDescriptor(
            std::make_shared<ORSSerialPacketDescriptor>(
                ORSSerialPacketDescriptor::PrefixSuffix{"!", "\r\n"}, 64));
        // Answered by exactly these bytes within two seconds.
        m_port->sendRequest(ORSSerialRequest::requestWithDataToSend(
            "ID?\r\n", {}, std::chrono::seconds(2),
            std::make_shared<ORSSerialPacketDescriptor>(QByteArray("READY\r\n"))));
    }

    void serialPortDidReceivePacketMatchingDescriptor(ORSSerialPort &, const QByteArray &line,
                                                      const ORSSerialPacketDescriptorPtr &) override
    {
        std::printf("line: %s", line.constData());
    }

    void serialPortDidReceiveResponseToRequest(ORSSerialPort &, const QByteArray &,
                                               const ORSSerialRequestPtr &) override
    {
        std::puts("the device is ready");
    }

    void serialPortRequestDidTimeout(ORSSerialPort &, const ORSSerialRequestPtr &) override
    {
        std::puts("the device does not answer");
        m_port->close();
    }

    void serialPortDidEncounterError(ORSSerialPort &, const ORSSerialPortError &error) override
    {
        std::fprintf(stderr, "%s: %s\n", qPrintable(error.path), qPrintable(error.description));
        // Posted, since an error of open() comes before there is an event loop to leave.
        if (!m_port->isOpen())
            QMetaObject::invokeMethod(
                qApp, [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    }

    void serialPortWasRemovedFromSystem(ORSSerialPort &) override { std::puts("unplugged"); }

    void serialPortWasClosed(ORSSerialPort &) override { QCoreApplication::quit(); }

private:
    const ORSSerialPortPtr m_port;
};

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const auto ports = ORSSerialPortManager::sharedSerialPortManager().availablePorts();
    for (const ORSSerialPortPtr &port : ports)
        std::printf("%s  %s\n", qPrintable(port->path()), qPrintable(port->name()));
    if (argc < 2)
        return 0;
    const ORSSerialPortPtr port =
        ORSSerialPort::serialPortWithPath(QString::fromLocal8Bit(argv[1]));
    if (!port) {
        std::fprintf(stderr, "There is no serial device %s\n", argv[1]);
        return 1;
    }
    const Terminal terminal(port);
    return QCoreApplication::exec();
}
