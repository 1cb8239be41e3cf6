#include "serial/RequestQueue.h"

#include <algorithm>

namespace vorn {
namespace {

// Longer than any device is waited for, and far below what a clock's count can hold.
constexpr ORSSerialRequest::TimeInterval kLongestTimeout{365.0 * 24 * 3600};

} // namespace

ORSSerialRequestPtr RequestQueue::pendingRequest() const
{
    const std::lock_guard lock(m_mutex);
    return m_pendingRequest;
}

QList<ORSSerialRequestPtr> RequestQueue::queuedRequests() const
{
    const std::lock_guard lock(m_mutex);
    return m_requestsQueue;
}

bool RequestQueue::isInUse() const
{
    const std::lock_guard lock(m_mutex);
    return m_isInUse;
}

bool RequestQueue::reallySendRequest(const ORSSerialRequestPtr &request)
{
    if (m_pendingRequest) {
        insertObjectInRequestsQueueAtIndex(request, m_requestsQueue.size());
        return true;
    }
    const bool written = startRequest(request);
    finishUnanswerable(written);
    return written;
}

bool RequestQueue::startRequest(const ORSSerialRequestPtr &request)
{
    m_requestResponseReceiveBuffer.reset();
    if (request->responseDescriptor())
        m_requestResponseReceiveBuffer.emplace(request->responseDescriptor());
    setPendingRequest(request, true);
    if (request->timeoutInterval() > ORSSerialRequest::TimeInterval::zero())
        startTimer(request->timeoutInterval());
    return m_host.writeRequest(request->dataToSend());
}

// A written request that expects no answer is done with, and so are those like it behind it. In a
// loop, since there may be any number of them.
void RequestQueue::finishUnanswerable(bool written)
{
    while (written && m_pendingRequest && !m_pendingRequest->responseDescriptor()) {
        if (m_requestsQueue.isEmpty()) {
            setPendingRequest(nullptr, false);
            return;
        }
        written = startRequest(takeNextRequest());
    }
}

void RequestQueue::checkResponseToPendingRequestAndContinueIfValidWithReceivedByte(char byte)
{
    if (!m_pendingRequest || !m_requestResponseReceiveBuffer)
        return;
    const std::optional<QByteArray> response = m_requestResponseReceiveBuffer->append(byte);
    if (!response)
        return;
    m_pendingRequestTimeoutTimer.reset();
    if (!response->isEmpty())
        m_host.requestWasAnswered(m_pendingRequest, *response);
    sendNextRequest();
}

void RequestQueue::sendNextRequest()
{
    if (m_requestsQueue.isEmpty())
        setPendingRequest(nullptr, false);
    else
        finishUnanswerable(startRequest(takeNextRequest()));
}

ORSSerialRequestPtr RequestQueue::takeNextRequest()
{
    ORSSerialRequestPtr next = m_requestsQueue.constFirst();
    setPendingRequest(nullptr, true);
    removeObjectFromRequestsQueueAtIndex(0);
    return next;
}

void RequestQueue::startTimer(ORSSerialRequest::TimeInterval interval)
{
    const auto nanoseconds =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::min(interval, kLongestTimeout));
    m_pendingRequestTimeoutTimer =
        std::make_unique<QueueTimer>(m_queue, nanoseconds, [this, life = m_host.lifetime()] {
            if (const auto alive = life.lock())
                pendingRequestDidTimeout();
        });
}

void RequestQueue::pendingRequestDidTimeout()
{
    m_pendingRequestTimeoutTimer.reset();
    if (!m_host.hearsOfTimeouts()) {
        sendNextRequest();
        return;
    }
    m_host.requestTimedOut(m_pendingRequest, [this, life = m_host.lifetime()] {
        const auto alive = life.lock();
        if (!alive)
            return;
        m_queue.post([this, life] {
            if (const auto stillAlive = life.lock())
                sendNextRequest();
        });
    });
}

void RequestQueue::cancelQueuedRequest(const ORSSerialRequestPtr &request)
{
    if (request == m_pendingRequest)
        return;
    const qsizetype index = m_requestsQueue.indexOf(request);
    if (index >= 0)
        removeObjectFromRequestsQueueAtIndex(index);
}

void RequestQueue::cancelAllQueuedRequests()
{
    setRequestsQueue({});
}

void RequestQueue::reset()
{
    setRequestsQueue({});
    setPendingRequest(nullptr, false);
}

void RequestQueue::setPendingRequest(const ORSSerialRequestPtr &request, bool isInUse)
{
    {
        const std::lock_guard lock(m_mutex);
        m_pendingRequest = request;
        m_isInUse = isInUse;
    }
    m_host.pendingRequestDidChange();
}

void RequestQueue::insertObjectInRequestsQueueAtIndex(const ORSSerialRequestPtr &request,
                                                      qsizetype index)
{
    {
        const std::lock_guard lock(m_mutex);
        m_requestsQueue.insert(index, request);
    }
    m_host.requestsQueueDidChange();
}

void RequestQueue::removeObjectFromRequestsQueueAtIndex(qsizetype index)
{
    {
        const std::lock_guard lock(m_mutex);
        m_requestsQueue.removeAt(index);
    }
    m_host.requestsQueueDidChange();
}

void RequestQueue::setRequestsQueue(const QList<ORSSerialRequestPtr> &requests)
{
    {
        const std::lock_guard lock(m_mutex);
        m_requestsQueue = requests;
    }
    m_host.requestsQueueDidChange();
}

} // namespace vorn
