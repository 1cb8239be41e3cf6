#pragma once

#include "update/DeviceLine.h"

#include <QByteArray>
#include <QByteArrayView>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace vorn {

// Holds the chunks received from a device until a sequence (a version query or an update) takes
// them; a sequence sleeps here until the next one arrives.
//
// The device answers at any time, and the thread that delivers its answers may be late. So a chunk
// that arrives while nobody waits is kept for the next wait. Thread-safe.
class ReceiveBuffer
{
public:
    // Longer chunks are truncated.
    static constexpr qsizetype kSize = 255;
    using Clock = DeviceLine::Clock;

    // Until this is called, chunks are dropped: they answer an earlier sequence.
    void startReceiving();
    // Adds a chunk from the port.
    void receive(QByteArrayView chunk);
    // The port has closed: waits end once all earlier chunks have been taken.
    void portDidClose();
    // Ends all waits at once.
    void abandon();
    bool isAbandoned() const;

    // How many chunks are held.
    std::size_t held() const;
    // Drops the held chunks, which cannot be answers to what is sent next.
    void drop();
    LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_held;
    bool m_isReceiving = false;
    bool m_portClosed = false;
    bool m_abandoned = false;
};

} // namespace vorn
