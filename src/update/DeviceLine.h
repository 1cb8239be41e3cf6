#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>

namespace vorn {

// How a wait for the device ended.
enum class LineEvent {
    Chunk,     // bytes arrived
    Silence,   // none did by the deadline
    Gone,      // the port is closed, and nothing is left of what arrived before
    Abandoned, // nobody is interested any more; whoever waited stops without a word
};

// What the boot loader's protocol needs of a line to a device, time included. Used on one thread,
// which it may block.
class DeviceLine
{
public:
    using Clock = std::chrono::steady_clock;

    // Drops every chunk that has arrived and was not taken, then sends the bytes. An abandoned or
    // closed line sends nothing; the next wait tells.
    virtual void send(QByteArrayView bytes) = 0;
    // RTS holds the device in reset while it is high. An abandoned line can only be lowered.
    virtual void setRts(bool high) = 0;
    // The oldest chunk that was not taken yet, or the next to arrive by the deadline.
    virtual LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk) = 0;
    // Lets the time pass.
    virtual void pause(std::chrono::milliseconds time) = 0;
    virtual Clock::time_point now() const = 0;

protected:
    ~DeviceLine() = default;
};

} // namespace vorn
