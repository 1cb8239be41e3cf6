#pragma once

#include "platform/Lifetime.h"
#include "platform/SerialQueue.h"
#include "serial/ORSSerialRequest.h"
#include "serial/PacketMatcher.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace vorn {

// What a request queue needs of its port. Called on the request handling queue.
class RequestQueueHost
{
public:
    // Expires with the host and its queue.
    virtual Lifetime::Token lifetime() = 0;
    // False if the write failed.
    virtual bool writeRequest(QByteArrayView data) = 0;
    virtual void requestWasAnswered(const ORSSerialRequestPtr &request,
                                    const QByteArray &response) = 0;
    // True if time-outs are reported to somebody. If not, the queue moves on by itself.
    virtual bool reportsTimeouts() = 0;
    // Reports the time-out (of a null request if none was pending) and calls sendNextRequest()
    // afterwards.
    virtual void requestTimedOut(const ORSSerialRequestPtr &request) = 0;
    virtual void pendingRequestDidChange() = 0;
    virtual void requestsQueueDidChange() = 0;

protected:
    virtual ~RequestQueueHost() = default;
};

// A port's requests: at most one is pending, that is in flight; the others wait behind it, oldest
// first. Methods run on the port's request handling queue unless stated otherwise.
//
// Only an answer stops the time-out timer. A request that expects no answer leaves its timer
// running: unless a later request replaces the timer, it ends whatever is pending when it fires.
// A request that is answered while its time-out is being reported advances the queue twice.
class RequestQueue
{
public:
    RequestQueue(SerialQueue &queue, RequestQueueHost &host) : m_queue(queue), m_host(host) {}
    RequestQueue(const RequestQueue &) = delete;
    RequestQueue &operator=(const RequestQueue &) = delete;

    // Any thread.
    ORSSerialRequestPtr pendingRequest() const;
    QList<ORSSerialRequestPtr> queuedRequests() const;
    bool isEmpty() const;
    // The number of the newest request, which counts all requests so far.
    quint64 newestNumber() const;

    // Sends the request if none is pending, else queues it. False if the write failed; the request
    // then stays pending until its time-out.
    bool reallySendRequest(const ORSSerialRequestPtr &request);
    // Removes the request from the queue; a pending or unknown one is ignored.
    void cancelQueuedRequest(const ORSSerialRequestPtr &request);
    // Empties the queue; the pending request stays.
    void cancelAllQueuedRequests();
    // Drops the requests up to that number, pending or not, and moves on to those after them.
    void forgetUpTo(quint64 number);
    // Ends the pending request and sends those behind it up to the next that expects an answer.
    void sendNextRequest();
    // Appends a received byte to the pending request's answer, and moves on when it is complete.
    void checkResponseToPendingRequestAndContinueIfValidWithReceivedByte(char byte);

private:
    // The number tells two entries of the same request apart.
    struct Numbered
    {
        ORSSerialRequestPtr request;
        quint64 number = 0;
    };

    bool startPendingRequest();
    void pendingRequestDidTimeout();
    void setPendingRequest(const Numbered &request);
    void changeRequestsQueue(const std::function<void()> &change);
    void insertObjectInRequestsQueueAtIndex(const Numbered &request, qsizetype index);
    void removeObjectFromRequestsQueueAtIndex(qsizetype index);

    SerialQueue &m_queue;
    RequestQueueHost &m_host;
    mutable std::mutex m_mutex; // guards the next three members
    Numbered m_pendingRequest;
    QList<Numbered> m_requestsQueue;
    quint64 m_newestNumber = 0;
    std::optional<PacketMatcher> m_requestResponseReceiveBuffer;
    std::unique_ptr<QueueTimer> m_pendingRequestTimeoutTimer;
};

} // namespace vorn
