#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace vorn {

// When bytes are through a serial line of a given speed. Works with points of time, so that
// neither a late wake-up nor a coarse sleep adds up. One direction each way, both idle at first.
class LineClock
{
public:
    using Time = std::chrono::steady_clock::time_point;

    // baud in bits per second, ten bits a byte (8N1); 0: a line that takes no time.
    explicit LineClock(int baud)
        : m_byteTime(baud > 0 ? std::chrono::nanoseconds(10'000'000'000LL / baud)
                              : std::chrono::nanoseconds::zero())
    {
    }

    // Bytes that were handed to the line's far end at `now` have arrived at the result.
    Time arrival(Time now, std::size_t count) { return through(m_inwards, now, count); }
    // Bytes that the device begins to send at `start` are at the far end at the result.
    Time departure(Time start, std::size_t count) { return through(m_outwards, start, count); }
    // What the device had yet to send is dropped: the line is idle from `now` on.
    void dropOutput(Time now) { m_outwards = std::min(m_outwards, now); }

private:
    Time through(Time &idleFrom, Time start, std::size_t count) const
    {
        idleFrom = std::max(idleFrom, start) + m_byteTime * static_cast<long long>(count);
        return idleFrom;
    }

    std::chrono::nanoseconds m_byteTime;
    Time m_inwards{};
    Time m_outwards{};
};

} // namespace vorn
