#include "platform/GlobalQueue.h"
#include "serial/ORSSerialPort_p.h"
#include "serial/PortLoop.h"

#include <cerrno>
#include <cstring>

using vorn::MainQueue;
using vorn::SerialTerminal;

namespace {

// The maximum size of a piece that is passed to the delegate.
constexpr qsizetype kPieceSize = 1024;

} // namespace

ORSSerialPortPrivate::ORSSerialPortPrivate(ORSSerialPort *owner,
                                           const vorn::SerialDeviceHandle &itsDevice)
    : port(owner), device(itsDevice), path(ORSSerialPort::bsdCalloutPathFromDevice(itsDevice)),
      name(ORSSerialPort::modemNameFromDevice(itsDevice))
{
}

std::shared_ptr<SerialTerminal> ORSSerialPortPrivate::openTerminal() const
{
    const std::lock_guard lock(terminalMutex);
    return terminal;
}

void ORSSerialPortPrivate::open()
{
    if (fileDescriptor != 0)
        return;
    if (const int error = openTerminalAtPath(); error != 0)
        notifyDelegateOfPosixError(error);
}

void ORSSerialPortPrivate::close()
{
    if (const auto opened = openTerminal())
        opened->requestClose();
}

int ORSSerialPortPrivate::openTerminalAtPath()
{
    auto opened = std::make_shared<SerialTerminal>();
    if (const int error = opened->open(path); error != 0)
        return error;
    // Before anything is reported: without a thread the port is not open.
    const bool isServed =
        vorn::GlobalQueue::instance().tryPost([self = shared_from_this(), opened] {
            // The opener holds this until the line is set and everything before its data is
            // reported.
            std::unique_lock(self->opening).unlock();
            vorn::runPortLoop(*self, opened);
        });
    if (!isServed) {
        opened->close(false);
        return EAGAIN;
    }
    {
        const std::lock_guard lock(terminalMutex);
        terminal = opened;
        fileDescriptor = opened->descriptor();
    }
    emitOnMain(&ORSSerialPort::fileDescriptorChanged);
    setPortOptions();
    updateModemLines();
    postToDelegate([](ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
        receiver.serialPortWasOpened(itsPort);
    });
    return 0;
}

void ORSSerialPortPrivate::setPortOptions()
{
    const auto opened = openTerminal();
    if (!opened)
        return;
    int error = 0;
    {
        const std::lock_guard oneAtATime(lineMutex);
        vorn::LineSettings wanted;
        {
            const std::lock_guard lock(settingsMutex);
            wanted = settings;
        }
        error = opened->applySettings(wanted);
    }
    if (error != 0)
        notifyDelegateOfPosixError(error);
}

void ORSSerialPortPrivate::updateModemLines()
{
    const auto opened = openTerminal();
    if (!opened)
        return;
    int error = 0;
    {
        const std::lock_guard oneAtATime(modemLinesMutex);
        bool wantedRts = false;
        bool wantedDtr = false;
        {
            const std::lock_guard lock(settingsMutex);
            wantedRts = rts;
            wantedDtr = dtr;
        }
        error = opened->setModemLines(wantedRts, wantedDtr);
    }
    if (error != 0)
        notifyOfModemLineError(*opened, error);
}

ORSSerialPortDelegate::Implements ORSSerialPortPrivate::implemented() const
{
    const std::lock_guard lock(delegateMutex);
    return delegate.isGone() ? ORSSerialPortDelegate::Implements() : delegateImplements;
}

void ORSSerialPortPrivate::postToDelegate(DelegateCall call)
{
    MainQueue::instance().post(
        [self = shared_from_this(), call = std::move(call)] { self->callDelegateAndWait(call); });
}

void ORSSerialPortPrivate::callDelegateAndWait(const DelegateCall &call)
{
    MainQueue::instance().postAndWait([&] {
        if (!port)
            return;
        if (ORSSerialPortDelegate *receiver = port->delegate())
            call(*port, *receiver);
    });
}

void ORSSerialPortPrivate::emitOnMain(void (ORSSerialPort::*signal)())
{
    const auto emitNow = [self = shared_from_this(), signal] {
        if (self->port)
            emit(self->port->*signal)();
    };
    if (MainQueue::instance().isCurrent())
        emitNow();
    else
        MainQueue::instance().post(emitNow);
}

void ORSSerialPortPrivate::notifyDelegateOfPosixErrorWaitingUntilDone(int error, bool wait)
{
    if (!implemented().didEncounterError)
        return;
    const DelegateCall report =
        [failure = ORSSerialPortError{error, QString::fromUtf8(std::strerror(error)), path}](
            ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
            receiver.serialPortDidEncounterError(itsPort, failure);
        };
    if (wait || MainQueue::instance().isCurrent())
        callDelegateAndWait(report);
    else
        postToDelegate(report);
}

void ORSSerialPortPrivate::notifyOfModemLineError(SerialTerminal &itsTerminal, int error)
{
    if (!vorn::meansNoModemLines(error) || itsTerminal.noteMissingModemLines())
        notifyDelegateOfPosixError(error);
}

bool ORSSerialPortPrivate::sendData(QByteArrayView data)
{
    const auto opened = openTerminal();
    if (!opened)
        return false;
    const int error = data.isEmpty() ? 0 : opened->writeAll(data);
    // A closing port is treated like a closed one: the write is refused without an error.
    if (error != 0 && error != ECANCELED)
        notifyDelegateOfPosixError(error);
    return error == 0;
}

void ORSSerialPortPrivate::receiveData(const QByteArray &bytes)
{
    MainQueue::instance().post([self = shared_from_this(), bytes] { self->deliverData(bytes); });
    if (packetDescriptors().isEmpty() && requests.isEmpty())
        return;
    requestHandlingQueue.post(
        [self = shared_from_this(), bytes] { self->matchReceivedData(bytes); });
}

void ORSSerialPortPrivate::deliverData(const QByteArray &bytes)
{
    for (qsizetype at = 0; at < bytes.size(); at += kPieceSize) {
        // For each piece, since the previous call may have destroyed either.
        ORSSerialPortDelegate *receiver = port ? port->delegate() : nullptr;
        if (!receiver)
            return;
        receiver->serialPortDidReceiveData(*port, bytes.mid(at, kPieceSize));
    }
}

void ORSSerialPortPrivate::matchReceivedData(const QByteArray &data)
{
    for (const char byte : data) {
        // Without the lock, since an evaluator may call packetDescriptors().
        for (vorn::PacketMatcher &listener : listeners)
            if (const auto packet = listener.append(byte))
                postToDelegate([descriptor = listener.descriptor(), packet = *packet](
                                   ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
                    receiver.serialPortDidReceivePacketMatchingDescriptor(itsPort, packet,
                                                                          descriptor);
                });
        requests.checkResponseToPendingRequestAndContinueIfValidWithReceivedByte(byte);
    }
}

QList<ORSSerialPacketDescriptorPtr> ORSSerialPortPrivate::packetDescriptors() const
{
    const std::lock_guard lock(listenersMutex);
    QList<ORSSerialPacketDescriptorPtr> all;
    for (const vorn::PacketMatcher &listener : listeners)
        all.append(listener.descriptor());
    return all;
}

void ORSSerialPortPrivate::startListening(const ORSSerialPacketDescriptorPtr &descriptor)
{
    // Another thread may have been faster.
    if (packetDescriptors().contains(descriptor))
        return;
    const std::lock_guard lock(listenersMutex);
    listeners.emplace_back(descriptor);
}

void ORSSerialPortPrivate::stopListening(const ORSSerialPacketDescriptorPtr &descriptor)
{
    const std::lock_guard lock(listenersMutex);
    std::erase_if(listeners, [&](const vorn::PacketMatcher &listener) {
        return listener.descriptor() == descriptor;
    });
}

void ORSSerialPortPrivate::notifyOfRemoval()
{
    callDelegateAndWait([](ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
        receiver.serialPortWasRemovedFromSystem(itsPort);
    });
}

void ORSSerialPortPrivate::terminalWasClosed(int error)
{
    if (error != 0) {
        notifyDelegateOfPosixError(error);
        return;
    }
    quint64 newestRequest = 0;
    {
        const std::scoped_lock lock(opening, terminalMutex);
        newestRequest = requests.newestNumber();
        terminal.reset();
        fileDescriptor = 0;
    }
    emitOnMain(&ORSSerialPort::fileDescriptorChanged);
    // Only if the delegate implements serialPortWasClosed() are requests dropped, and only those
    // made before the port was closed.
    if (!implemented().wasClosed)
        return;
    MainQueue::instance().postAndWait([&] {
        callDelegateAndWait([](ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
            receiver.serialPortWasClosed(itsPort);
        });
        requestHandlingQueue.post([self = shared_from_this(), newestRequest] {
            self->requests.forgetUpTo(newestRequest);
        });
    });
}
