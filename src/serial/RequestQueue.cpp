#include "serial/RequestQueue.h"

#include <algorithm>

namespace vorn {
namespace {

// Limits user input to what a clock can represent.
constexpr ORSSerialRequest::TimeInterval kLongestTimeout{365.0 * 24 * 3600};

} // namespace

ORSSerialRequestPtr RequestQueue::pendingRequest() const
{
    const std::lock_guard lock(m_mutex);
    return m_pendingRequest.request;
}

QList<ORSSerialRequestPtr> RequestQueue::queuedRequests() const
{
    const std::lock_guard lock(m_mutex);
    QList<ORSSerialRequestPtr> requests;
    for (const Numbered &queued : m_requestsQueue)
        requests.append(queued.request);
    return requests;
}

bool RequestQueue::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return !m_pendingRequest.request && m_requestsQueue.isEmpty();
}

quint64 RequestQueue::newestNumber() const
{
    const std::lock_guard lock(m_mutex);
    return m_newestNumber;
}

bool RequestQueue::reallySendRequest(const ORSSerialRequestPtr &request)
{
    const Numbered numbered = [&] {
        const std::lock_guard lock(m_mutex);
        return Numbered{request, ++m_newestNumber};
    }();
    if (m_pendingRequest.request) {
        insertObjectInRequestsQueueAtIndex(numbered, m_requestsQueue.size());
        return true;
    }
    setPendingRequest(numbered);
    const bool written = startPendingRequest();
    if (written && !request->responseDescriptor())
        sendNextRequest();
    return written;
}

bool RequestQueue::startPendingRequest()
{
    const ORSSerialRequest &request = *m_pendingRequest.request;
    m_requestResponseReceiveBuffer.reset();
    if (request.responseDescriptor())
        m_requestResponseReceiveBuffer.emplace(request.responseDescriptor());
    if (request.timeoutInterval() > ORSSerialRequest::TimeInterval::zero()) {
        const auto delay = std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::min(request.timeoutInterval(), kLongestTimeout));
        m_pendingRequestTimeoutTimer =
            std::make_unique<QueueTimer>(m_queue, delay, [this, life = m_host.lifetime()] {
                if (const auto alive = life.lock())
                    pendingRequestDidTimeout();
            });
    }
    return m_host.writeRequest(request.dataToSend());
}

void RequestQueue::checkResponseToPendingRequestAndContinueIfValidWithReceivedByte(char byte)
{
    if (!m_pendingRequest.request || !m_requestResponseReceiveBuffer)
        return;
    const std::optional<QByteArray> response = m_requestResponseReceiveBuffer->append(byte);
    if (!response)
        return;
    m_pendingRequestTimeoutTimer.reset();
    if (!response->isEmpty())
        m_host.requestWasAnswered(m_pendingRequest.request, *response);
    sendNextRequest();
}

// A loop, since any number of the next requests may expect no answer, which ends them once they are
// written.
void RequestQueue::sendNextRequest()
{
    while (!m_requestsQueue.isEmpty()) {
        setPendingRequest(m_requestsQueue.constFirst());
        removeObjectFromRequestsQueueAtIndex(0);
        if (!startPendingRequest() || m_pendingRequest.request->responseDescriptor())
            return;
    }
    setPendingRequest({});
}

void RequestQueue::pendingRequestDidTimeout()
{
    m_pendingRequestTimeoutTimer.reset();
    if (m_host.reportsTimeouts())
        m_host.requestTimedOut(m_pendingRequest.request);
    else
        sendNextRequest();
}

void RequestQueue::cancelQueuedRequest(const ORSSerialRequestPtr &request)
{
    if (request == m_pendingRequest.request)
        return;
    const auto found =
        std::find_if(m_requestsQueue.cbegin(), m_requestsQueue.cend(),
                     [&](const Numbered &queued) { return queued.request == request; });
    if (found != m_requestsQueue.cend())
        removeObjectFromRequestsQueueAtIndex(found - m_requestsQueue.cbegin());
}

void RequestQueue::cancelAllQueuedRequests()
{
    changeRequestsQueue([&] { m_requestsQueue.clear(); });
}

void RequestQueue::forgetUpTo(quint64 number)
{
    changeRequestsQueue([&] {
        m_requestsQueue.removeIf([&](const Numbered &queued) { return queued.number <= number; });
    });
    if (m_pendingRequest.number <= number)
        sendNextRequest();
}

void RequestQueue::setPendingRequest(const Numbered &request)
{
    {
        const std::lock_guard lock(m_mutex);
        m_pendingRequest = request;
    }
    m_host.pendingRequestDidChange();
}

void RequestQueue::changeRequestsQueue(const std::function<void()> &change)
{
    {
        const std::lock_guard lock(m_mutex);
        change();
    }
    m_host.requestsQueueDidChange();
}

void RequestQueue::insertObjectInRequestsQueueAtIndex(const Numbered &request, qsizetype index)
{
    changeRequestsQueue([&] { m_requestsQueue.insert(index, request); });
}

void RequestQueue::removeObjectFromRequestsQueueAtIndex(qsizetype index)
{
    changeRequestsQueue([&] { m_requestsQueue.removeAt(index); });
}

} // namespace vorn
