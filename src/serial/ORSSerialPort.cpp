#include "serial/ORSSerialPort.h"

#include "serial/LivePorts.h"
#include "serial/ORSSerialPort_p.h"
#include "serial/SerialLog.h"

using vorn::SerialDeviceHandle;

namespace {

// The methods below that may call the delegate or emit signals keep a copy of `d` and do not touch
// the port afterwards: the receiver may release the port.

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
    d->livePorts->add(this);
}

ORSSerialPort::~ORSSerialPort()
{
    d->livePorts->remove(this);
    d->port = nullptr;
    d->close();
}

ORSSerialPort *ORSSerialPort::existingPortWithPath(const QString &path)
{
    return vorn::LivePorts::instance()->withPath(path);
}

void ORSSerialPort::open()
{
    const auto self = d;
    const std::lock_guard lock(self->opening);
    self->open();
}

bool ORSSerialPort::close()
{
    d->close();
    return true;
}

void ORSSerialPort::cleanupAfterSystemRemoval()
{
    const auto self = d;
    self->notifyOfRemoval();
    self->close();
}

void ORSSerialPort::cleanup()
{
    qCWarning(vorn::logSerial,
              "WARNING: Cleanup is deprecated and was never intended to be called "
              "publicly. You should update your code to avoid calling this method.");
    cleanupAfterSystemRemoval();
}

bool ORSSerialPort::sendData(QByteArrayView data)
{
    const auto self = d;
    return self->sendData(data);
}

void ORSSerialPort::startListeningForPacketsMatchingDescriptor(
    const ORSSerialPacketDescriptorPtr &descriptor)
{
    const auto self = d;
    if (self->packetDescriptors().contains(descriptor))
        return;
    self->requestHandlingQueue.postAndWait([&] { self->startListening(descriptor); });
    self->emitOnMain(&ORSSerialPort::packetDescriptorsAndBuffersChanged);
}

void ORSSerialPort::stopListeningForPacketsMatchingDescriptor(
    const ORSSerialPacketDescriptorPtr &descriptor)
{
    const auto self = d;
    self->requestHandlingQueue.postAndWait([&] { self->stopListening(descriptor); });
    self->emitOnMain(&ORSSerialPort::packetDescriptorsAndBuffersChanged);
}

QList<ORSSerialPacketDescriptorPtr> ORSSerialPort::packetDescriptors() const
{
    return d->packetDescriptors();
}

void ORSSerialPort::setDelegate(std::nullptr_t)
{
    setDelegate(nullptr, {});
}

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

SerialDeviceHandle ORSSerialPort::IOKitDevice() const
{
    return d->device;
}
QString ORSSerialPort::path() const
{
    return d->path;
}
QString ORSSerialPort::name() const
{
    return d->name;
}
int ORSSerialPort::fileDescriptor() const
{
    return d->fileDescriptor;
}
bool ORSSerialPort::CTS() const
{
    return d->cts;
}
bool ORSSerialPort::DSR() const
{
    return d->dsr;
}
bool ORSSerialPort::DCD() const
{
    return d->dcd;
}
