#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace vorn {

// How a wait for the device's answer ended.
enum class Verdict {
    Ack,
    Nak,
    // Nothing that decides came in time, or the port closed.
    Timeout,
    // Another sequence has begun and owns the line now; the one that waited ends without a word.
    Abandoned,
};

// The most recent chunk of bytes from the device, and the place where a sequence (a version query or
// an update) sleeps until one arrives.
//
// The device answers when it likes, and the thread that delivers its answers may be late. So a chunk
// that arrives while nobody waits is held, and lands right after the next wait has cleared the
// buffer; what was held before a frame goes out is dropped at that moment (frameGoesOut()), since it
// cannot be the answer to that frame. Any thread.
class ReceiveBuffer
{
public:
    static constexpr std::size_t kSize = 255;
    using Sequence = quint64;

    // Begins a new sequence on the line; the one before is abandoned.
    Sequence beginSequence();
    bool isCurrent(Sequence sequence) const;
    // The port has closed: the current sequence's waits end at once, as time-outs.
    void linkWasLost();

    // Takes a chunk from the port. Bytes beyond kSize are dropped.
    void receive(QByteArrayView chunk);
    // Sets all bytes to zero.
    void clearReceiveByte();
    // Drops what is held.
    void frameGoesOut();

    // Clears the buffer, then sleeps until a chunk decides: its first byte is AckByte or NakByte.
    Verdict waitForVerdict(Sequence sequence, std::chrono::milliseconds limit);
    // Puts what follows within the limit behind the chunk in the buffer, until that has `length`
    // bytes. Lines may cut one answer into several chunks.
    void completeChunk(Sequence sequence, std::size_t length, std::chrono::milliseconds limit);
    // Holds what the chunk in the buffer carries behind its first byte, as a chunk of its own.
    void splitChunk();

    quint8 byteAt(std::size_t index) const;

private:
    using Clock = std::chrono::steady_clock;

    void land(const QByteArray &chunk, std::size_t offset);
    // Sleeps until a chunk is held; false when none came by the deadline, or none will.
    bool waitForChunk(std::unique_lock<std::mutex> &lock, Sequence sequence,
                      Clock::time_point deadline);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::array<quint8, kSize> m_bytes{};
    std::size_t m_length = 0;
    std::deque<QByteArray> m_held;
    Sequence m_sequence = 0;
    bool m_linkLost = false;
};

} // namespace vorn
