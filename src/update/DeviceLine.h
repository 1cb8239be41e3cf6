#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>

namespace vorn {

// How a wait for the device ended.
enum class LineEvent {
    Chunk,     // bytes arrived
    Silence,   // none did by the deadline
    Gone,      // the port has closed, and all that had arrived has been taken
    Abandoned, // nobody is interested in the result any more; stop without reporting anything
};

// What the boot loader protocol needs of a line to a device, including time. Used on one thread,
// which it may block.
class DeviceLine
{
public:
    using Clock = std::chrono::steady_clock;

    // Drops all chunks that have arrived and were not taken, then sends the bytes. An abandoned or
    // closed line sends nothing; the next wait reports it.
    virtual void send(QByteArrayView bytes) = 0;
    // A high RTS holds the device in reset. On an abandoned line it can only be set low.
    virtual void setRts(bool high) = 0;
    // Takes the oldest chunk that has arrived, or else waits for the next one until the deadline.
    virtual LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk) = 0;
    // Waits.
    virtual void pause(std::chrono::milliseconds time) = 0;
    virtual Clock::time_point now() const = 0;

protected:
    ~DeviceLine() = default;
};

} // namespace vorn
