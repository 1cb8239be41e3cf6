#pragma once

#include "update/DeviceLine.h"

#include <QByteArray>
#include <QByteArrayView>

#include <condition_variable>
#include <deque>
#include <mutex>

namespace vorn {

// The chunks that a device has sent, and the place where one sequence (a version query or an
// update) sleeps until the next arrives.
//
// The device answers when it likes, and the thread that delivers its answers may be late. So a
// chunk that arrives while nobody waits is held for the next wait. Any thread.
class ReceiveBuffer
{
public:
    // A chunk longer than this is cut.
    static constexpr qsizetype kSize = 255;
    using Clock = DeviceLine::Clock;

    // Takes a chunk from the port.
    void receive(QByteArrayView chunk);
    // The port has closed: waits end as soon as what arrived before has been taken.
    void portDidClose();
    // Ends every wait at once.
    void abandon();
    bool isAbandoned() const;

    // Drops the held chunks: they cannot answer what is sent next.
    void drop();
    LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk);

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<QByteArray> m_held;
    bool m_portClosed = false;
    bool m_abandoned = false;
};

} // namespace vorn
