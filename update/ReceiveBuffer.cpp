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
        m_linkLost = false;
        m_held.clear();
    }
    m_changed.notify_all();
    return sequence;
}

bool ReceiveBuffer::isCurrent(Sequence sequence) const
{
    const std::lock_guard lock(m_mutex);
    return sequence == m_sequence;
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

void ReceiveBuffer::frameGoesOut()
{
    const std::lock_guard lock(m_mutex);
    m_held.clear();
}

Verdict ReceiveBuffer::waitForVerdict(Sequence sequence, std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    std::unique_lock lock(m_mutex);
    land({}, 0);
    while (waitForChunk(lock, sequence, deadline)) {
        land(m_held.front(), 0);
        m_held.pop_front();
        if (m_bytes[0] == AckByte)
            return Verdict::Ack;
        if (m_bytes[0] == NakByte)
            return Verdict::Nak;
    }
    return sequence == m_sequence ? Verdict::Timeout : Verdict::Abandoned;
}

void ReceiveBuffer::completeChunk(Sequence sequence, std::size_t length,
                                  std::chrono::milliseconds limit)
{
    const auto deadline = Clock::now() + limit;
    std::unique_lock lock(m_mutex);
    while (m_length < length && waitForChunk(lock, sequence, deadline)) {
        land(m_held.front(), m_length);
        m_held.pop_front();
    }
}

void ReceiveBuffer::splitChunk()
{
    const std::lock_guard lock(m_mutex);
    if (m_length < 2)
        return;
    QByteArray rest;
    std::for_each(m_bytes.begin() + 1, m_bytes.begin() + static_cast<std::ptrdiff_t>(m_length),
                  [&](quint8 byte) { rest.append(static_cast<char>(byte)); });
    m_held.push_front(rest);
}

quint8 ReceiveBuffer::byteAt(std::size_t index) const
{
    const std::lock_guard lock(m_mutex);
    return m_bytes.at(index);
}

// Puts the chunk at the offset; what stood behind is zero afterwards.
void ReceiveBuffer::land(const QByteArray &chunk, std::size_t offset)
{
    const std::size_t count = std::min(static_cast<std::size_t>(chunk.size()), kSize - offset);
    const auto end = std::copy_n(chunk.begin(), count, m_bytes.begin() + static_cast<long>(offset));
    std::fill(end, m_bytes.end(), quint8{0});
    m_length = offset + count;
}

bool ReceiveBuffer::waitForChunk(std::unique_lock<std::mutex> &lock, Sequence sequence,
                                 Clock::time_point deadline)
{
    m_changed.wait_until(lock, deadline, [&] {
        return !m_held.empty() || m_linkLost || sequence != m_sequence;
    });
    return sequence == m_sequence && !m_held.empty();
}

} // namespace vorn
