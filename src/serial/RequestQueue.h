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
    // Writes the bytes; false when that failed.
    virtual bool writeRequest(QByteArrayView data) = 0;
    virtual void requestWasAnswered(const ORSSerialRequestPtr &request,
                                    const QByteArray &response) = 0;
    // Whether somebody hears of time-outs. When not, the queue moves on by itself.
    virtual bool hearsOfTimeouts() = 0;
    // Tells of the time-out (of no request, when none was pending), and then calls back.
    virtual void requestTimedOut(const ORSSerialRequestPtr &request,
                                 std::function<void()> moveOn) = 0;
    virtual void pendingRequestDidChange() = 0;
    virtual void requestsQueueDidChange() = 0;

protected:
    virtual ~RequestQueueHost() = default;
};

// A port's requests: at most one in flight, the pending one, and those that wait behind it, oldest
// first. Everything but the questions below happens on the port's request handling queue.
//
// Only an answer stops the time-out's timer. A request that expects no answer leaves its timer
// running: unless a later request replaces it, it ends whatever is pending when it fires. And a
// request that is answered while its time-out is still being told of moves the queue on twice.
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
    // How many requests were accepted so far: the number of the newest.
    quint64 newestNumber() const;

    // Sends the request when nothing is pending, else queues it. False when the write failed; the
    // request then stays pending until its time-out.
    bool reallySendRequest(const ORSSerialRequestPtr &request);
    // Takes the request out of the queue; does nothing to a pending or unknown one.
    void cancelQueuedRequest(const ORSSerialRequestPtr &request);
    // Empties the queue; the pending request stays.
    void cancelAllQueuedRequests();
    // Forgets the requests up to that number, pending or not; those behind them take their turn.
    void forgetUpTo(quint64 number);
    // Gives one received byte to the pending request.
    void checkResponseToPendingRequestAndContinueIfValidWithReceivedByte(char byte);

private:
    // A request may be sent again while it waits: its number tells one time from the other.
    struct Numbered
    {
        ORSSerialRequestPtr request;
        quint64 number = 0;
    };

    bool startPendingRequest();
    void sendNextRequest();
    void pendingRequestDidTimeout();
    void setPendingRequest(const Numbered &request);
    void insertObjectInRequestsQueueAtIndex(const Numbered &request, qsizetype index);
    void removeObjectFromRequestsQueueAtIndex(qsizetype index);
    void setRequestsQueue(const QList<Numbered> &requests);

    SerialQueue &m_queue;
    RequestQueueHost &m_host;
    mutable std::mutex m_mutex; // guards the three below against other threads' questions
    Numbered m_pendingRequest;
    QList<Numbered> m_requestsQueue;
    quint64 m_newestNumber = 0;
    std::optional<PacketMatcher> m_requestResponseReceiveBuffer;
    std::unique_ptr<QueueTimer> m_pendingRequestTimeoutTimer;
};

} // namespace vorn
