#include "update/ReceiveBuffer.h"

#include <algorithm>

namespace vorn {
namespace {

// A device sends one answer at a time; thousands of chunks are line noise and must not fill memory.
constexpr std::size_t kMostHeldChunks = 4096;

} // namespace

void ReceiveBuffer::startReceiving()
{
    const std::lock_guard lock(m_mutex);
    m_isReceiving = true;
}

void ReceiveBuffer::receive(QByteArrayView chunk)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isReceiving || chunk.isEmpty() || m_held.size() >= kMostHeldChunks)
            return;
        m_held.push_back(chunk.first(std::min(chunk.size(), kSize)).toByteArray());
    }
    m_changed.notify_all();
}

void ReceiveBuffer::portDidClose()
{
    {
        const std::lock_guard lock(m_mutex);
        m_portClosed = true;
    }
    m_changed.notify_all();
}

void ReceiveBuffer::abandon()
{
    {
        const std::lock_guard lock(m_mutex);
        m_abandoned = true;
    }
    m_changed.notify_all();
}

bool ReceiveBuffer::isAbandoned() const
{
    const std::lock_guard lock(m_mutex);
    return m_abandoned;
}

std::size_t ReceiveBuffer::held() const
{
    const std::lock_guard lock(m_mutex);
    return m_held.size();
}

void ReceiveBuffer::drop()
{
    const std::lock_guard lock(m_mutex);
    m_held.clear();
}

LineEvent ReceiveBuffer::waitForChunk(Clock::time_point deadline, QByteArray &chunk)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_until(lock, deadline,
                         [&] { return !m_held.empty() || m_portClosed || m_abandoned; });
    if (m_abandoned)
        return LineEvent::Abandoned;
    if (m_held.empty())
        return m_portClosed ? LineEvent::Gone : LineEvent::Silence;
    chunk = std::move(m_held.front());
    m_held.pop_front();
    return LineEvent::Chunk;
}

} // namespace vorn
