#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <array>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace vorn {

// How a wait for the device's answer ended.
enum class Verdict {
    Ack,
    Nak,
    Timeout,  // nothing that decides came in time
    LinkLost, // the port closed, and nothing that decides came before
    // Another sequence has begun and owns the line now, or there is nobody left to tell; the one
    // that waited ends without a word.
    Abandoned,
};

// The most recent chunk of bytes from the device, and the place where a sequence (a version query
// or an update) sleeps until one arrives.
//
// The device answers when it likes, and the thread that delivers its answers may be late. So a
// chunk that arrives while nobody waits is held, and lands in the buffer when somebody does; what
// was held before a frame goes out is dropped at that moment (frameGoesOut()), since it cannot be
// the answer to that frame. Any thread.
class ReceiveBuffer
{
public:
    static constexpr std::size_t kSize = 255;
    using Sequence = quint64;

    // Begins a new sequence on the line; the one before is abandoned.
    Sequence beginSequence();
    // Abandons the current sequence without a new one.
    void abandonSequence();
    bool isCurrent(Sequence sequence) const;
    // Calls the action, a short one, unless a later sequence has begun; none begins meanwhile.
    void unlessSucceeded(Sequence sequence, const std::function<void()> &action) const;
    // The port has closed: the current sequence's waits end as soon as what arrived is judged.
    void linkWasLost();

    // Takes a chunk from the port. Bytes beyond kSize are dropped.
    void receive(QByteArrayView chunk);
    // Sets all bytes to zero.
    void clearReceiveByte();
    // Drops what is held. False when the sequence is no longer current and must send nothing.
    [[nodiscard]] bool frameGoesOut(Sequence sequence);

    // Sleeps until a chunk decides: its first byte is AckByte or NakByte.
    Verdict waitForVerdict(Sequence sequence, std::chrono::milliseconds limit);
    // Puts what follows within the limit behind the chunk in the buffer, until that has `length`
    // bytes, and says whether it has. Lines may cut one answer into several chunks.
    bool completeChunk(Sequence sequence, std::size_t length, std::chrono::milliseconds limit);
    // Holds what the chunk in the buffer carries behind its first byte, as a chunk of its own.
    void splitChunk();

    quint8 byteAt(std::size_t index) const;

private:
    using Clock = std::chrono::steady_clock;

    bool isCurrentLocked(Sequence sequence) const;
    void land(QByteArrayView chunk, std::size_t offset);
    // Sleeps until a chunk is held; false when none came by the deadline, or none will.
    bool waitForChunk(std::unique_lock<std::mutex> &lock, Sequence sequence,
                      Clock::time_point deadline);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::array<quint8, kSize> m_bytes{};
    std::size_t m_length = 0;
    std::deque<QByteArray> m_held;
    Sequence m_sequence = 0;
    bool m_abandoned = false;
    bool m_linkLost = false;
};

} // namespace vorn
