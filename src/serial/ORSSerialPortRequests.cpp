// The port's side of the request queue.
#include "serial/ORSSerialPort_p.h"

bool ORSSerialPort::sendRequest(const ORSSerialRequestPtr &request)
{
    const auto held = d; // the port may be destroyed while the caller waits
    bool sent = false;
    held->requestHandlingQueue.postAndWait(
        [&] { sent = held->requests.reallySendRequest(request); });
    return sent;
}

void ORSSerialPort::cancelQueuedRequest(const ORSSerialRequestPtr &request)
{
    if (request)
        d->requestHandlingQueue.post(
            [held = d, request] { held->requests.cancelQueuedRequest(request); });
}

void ORSSerialPort::cancelAllQueuedRequests()
{
    d->requestHandlingQueue.post([held = d] { held->requests.cancelAllQueuedRequests(); });
}

ORSSerialRequestPtr ORSSerialPort::pendingRequest() const
{
    return d->requests.pendingRequest();
}

QList<ORSSerialRequestPtr> ORSSerialPort::queuedRequests() const
{
    return d->requests.queuedRequests();
}

void ORSSerialPortPrivate::requestWasAnswered(const ORSSerialRequestPtr &request,
                                              const QByteArray &response)
{
    postToDelegate([request, response](ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
        receiver.serialPortDidReceiveResponseToRequest(itsPort, response, request);
    });
}

void ORSSerialPortPrivate::requestTimedOut(const ORSSerialRequestPtr &request)
{
    vorn::MainQueue::instance().post([self = shared_from_this(), request] {
        self->callDelegateAndWait([&](ORSSerialPort &itsPort, ORSSerialPortDelegate &receiver) {
            receiver.serialPortRequestDidTimeout(itsPort, request);
        });
        // Even if the delegate is gone by now: the queue must not get stuck.
        self->requestHandlingQueue.post([self] { self->requests.sendNextRequest(); });
    });
}

void ORSSerialPortPrivate::pendingRequestDidChange()
{
    emitOnMain(&ORSSerialPort::pendingRequestChanged);
}

void ORSSerialPortPrivate::requestsQueueDidChange()
{
    emitOnMain(&ORSSerialPort::requestsQueueChanged);
}
