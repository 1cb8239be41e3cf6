#include "serial/ORSSerialPort.h"

#include "serial/LivePorts.h"
#include "serial/ORSSerialPort_p.h"

#include <QLoggingCategory>

using vorn::SerialDeviceHandle;

namespace {

Q_LOGGING_CATEGORY(logSerial, "vorn.serial")

// The last owner of a port may be a background job, but a port dies on the main thread.
struct MainThreadDeleter
{
    void operator()(ORSSerialPort *port) const
    {
        std::shared_ptr<ORSSerialPort> owner(port);
        if (!vorn::MainQueue::instance().isCurrent())
            vorn::MainQueue::instance().post([owner = std::move(owner)] {});
    }
};

} // namespace

ORSSerialPortPtr ORSSerialPort::serialPortWithPath(const QString &path)
{
    return serialPortWithDevice(deviceFromBSDPath(path));
}

ORSSerialPortPtr ORSSerialPort::serialPortWithDevice(const SerialDeviceHandle &device)
{
    if (!device)
        return nullptr;
    return {std::make_unique<ORSSerialPort>(device).release(), MainThreadDeleter()};
}

// Always a new port, also when one with this path lives: the registry then answers with the first.
ORSSerialPort::ORSSerialPort(const SerialDeviceHandle &device)
    : d(std::make_shared<ORSSerialPortPrivate>(this, device))
{
    vorn::LivePorts::instance().add(this);
}

ORSSerialPort::~ORSSerialPort()
{
    vorn::LivePorts::instance().remove(this);
    d->port = nullptr;
    d->close();
}

ORSSerialPort *ORSSerialPort::existingPortWithPath(const QString &path)
{
    return vorn::LivePorts::instance().withPath(path);
}

void ORSSerialPort::open()
{
    const std::lock_guard lock(d->opening);
    d->open();
}

bool ORSSerialPort::close()
{
    d->close();
    return true;
}

void ORSSerialPort::cleanupAfterSystemRemoval()
{
    d->tellOfRemoval();
    close();
}

void ORSSerialPort::cleanup()
{
    qCWarning(logSerial, "WARNING: Cleanup is deprecated and was never intended to be called "
                         "publicly. You should update your code to avoid calling this method.");
    cleanupAfterSystemRemoval();
}

bool ORSSerialPort::sendData(QByteArrayView data) { return d->sendData(data); }

void ORSSerialPort::startListeningForPacketsMatchingDescriptor(
    const ORSSerialPacketDescriptorPtr &descriptor)
{
    if (d->packetListeners.contains(descriptor))
        return;
    d->requestHandlingQueue.postAndWait([&] { d->packetListeners.add(descriptor); });
    d->emitOnMain(&ORSSerialPort::packetDescriptorsAndBuffersChanged);
}

void ORSSerialPort::stopListeningForPacketsMatchingDescriptor(
    const ORSSerialPacketDescriptorPtr &descriptor)
{
    d->requestHandlingQueue.postAndWait([&] { d->packetListeners.remove(descriptor); });
    d->emitOnMain(&ORSSerialPort::packetDescriptorsAndBuffersChanged);
}

QList<ORSSerialPacketDescriptorPtr> ORSSerialPort::packetDescriptors() const
{
    return d->packetListeners.descriptors();
}

void ORSSerialPort::setDelegate(std::nullptr_t) { setDelegate(nullptr, {}); }

void ORSSerialPort::setDelegate(ORSSerialPortDelegate *delegate,
                                ORSSerialPortDelegate::Implements implements)
{
    const std::lock_guard lock(d->delegateMutex);
    d->delegate = vorn::WeakDelegate(delegate);
    d->delegateImplements = implements;
}

ORSSerialPortDelegate *ORSSerialPort::delegate() const
{
    const std::lock_guard lock(d->delegateMutex);
    return d->delegate.get();
}

SerialDeviceHandle ORSSerialPort::IOKitDevice() const { return d->device; }
QString ORSSerialPort::path() const { return d->path; }
QString ORSSerialPort::name() const { return d->name; }
int ORSSerialPort::fileDescriptor() const { return d->fileDescriptor; }
bool ORSSerialPort::CTS() const { return d->cts; }
bool ORSSerialPort::DSR() const { return d->dsr; }
bool ORSSerialPort::DCD() const { return d->dcd; }
