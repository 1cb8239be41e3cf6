#include "update/ReceiveBuffer.h"

#include "update/Frames.h"

#include <algorithm>

namespace vorn {
namespace {

// A device owes one answer at a time; thousands are noise on the line and must not fill the memory.
constexpr std::size_t kMostHeldChunks = 4096;

} // namespace

ReceiveBuffer::Sequence ReceiveBuffer::beginSequence()
{
    Sequence sequence = 0;
    {
        const std::lock_guard lock(m_mutex);
        sequence = ++m_sequence;
        m_abandoned = false;
        m_linkLost = false;
        m_held.clear();
    }
    m_changed.notify_all();
    return sequence;
}

void ReceiveBuffer::abandonSequence()
{
    {
        const std::lock_guard lock(m_mutex);
        m_abandoned = true;
    }
    m_changed.notify_all();
}

bool ReceiveBuffer::isCurrent(Sequence sequence) const
{
    const std::lock_guard lock(m_mutex);
    return isCurrentLocked(sequence);
}

bool ReceiveBuffer::isCurrentLocked(Sequence sequence) const
{
    return sequence == m_sequence && !m_abandoned;
}

void ReceiveBuffer::unlessSucceeded(Sequence sequence, const std::function<void()> &action) const
{
    const std::lock_guard lock(m_mutex);
    if (sequence == m_sequence)
        action();
}

void ReceiveBuffer::linkWasLost()
{
    {
        const std::lock_guard lock(m_mutex);
        m_linkLost = true;
    }
    m_changed.notify_all();
}

void ReceiveBuffer::receive(QByteArrayView chunk)
{
    {
        const std::lock_guard lock(m_mutex);
        if (chunk.isEmpty() || m_held.size() >= kMostHeldChunks)
            return;
        m_held.push_back(chunk.first(std::min<qsizetype>(chunk.size(), kSize)).toByteArray());
    }
    m_changed.notify_all();
}

void ReceiveBuffer::clearReceiveByte()
{
    const std::lock_guard lock(m_mutex);
    land({}, 0);
}

bool ReceiveBuffer::frameGoesOut(Sequence sequence)
{
    const std::lock_guard lock(m_mutex);
    if (!isCurrentLocked(sequence))
        return false;
    m_held.clear();
    return true;
}

Verdict ReceiveBuffer::waitForVerdict(Sequence sequence, std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    std::unique_lock lock(m_mutex);
    while (waitForChunk(lock, sequence, deadline)) {
        land(m_held.front(), 0);
        m_held.pop_front();
        if (m_bytes[0] == AckByte)
            return Verdict::Ack;
        if (m_bytes[0] == NakByte)
            return Verdict::Nak;
    }
    if (!isCurrentLocked(sequence))
        return Verdict::Abandoned;
    return m_linkLost ? Verdict::LinkLost : Verdict::Timeout;
}

bool ReceiveBuffer::completeChunk(Sequence sequence, std::size_t length,
                                  std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    std::unique_lock lock(m_mutex);
    while (m_length < length && waitForChunk(lock, sequence, deadline)) {
        land(m_held.front(), m_length);
        m_held.pop_front();
    }
    return m_length >= length;
}

void ReceiveBuffer::splitChunk()
{
    const std::lock_guard lock(m_mutex);
    if (m_length < 2)
        return;
    const QByteArrayView chunk(m_bytes.data(), static_cast<qsizetype>(m_length));
    m_held.push_front(chunk.sliced(1).toByteArray());
}

quint8 ReceiveBuffer::byteAt(std::size_t index) const
{
    const std::lock_guard lock(m_mutex);
    return m_bytes.at(index);
}

// Puts the chunk at the offset; what stood behind is zero afterwards.
void ReceiveBuffer::land(QByteArrayView chunk, std::size_t offset)
{
    const std::size_t count = std::min(static_cast<std::size_t>(chunk.size()), kSize - offset);
    const auto place = m_bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    std::fill(std::copy_n(chunk.begin(), count, place), m_bytes.end(), quint8{0});
    m_length = offset + count;
}

bool ReceiveBuffer::waitForChunk(std::unique_lock<std::mutex> &lock, Sequence sequence,
                                 Clock::time_point deadline)
{
    m_changed.wait_until(lock, deadline, [&] {
        return !m_held.empty() || m_linkLost || !isCurrentLocked(sequence);
    });
    return isCurrentLocked(sequence) && !m_held.empty();
}

} // namespace vorn
