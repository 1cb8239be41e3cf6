#pragma once

#include "simulator/UniqueFd.h"

namespace vorn {

// Ends the program in good order: SIGTERM, SIGINT and SIGHUP, and a call from any thread, end the
// waiting. Made before any other thread, so that no thread takes the signals first.
class StopEvents
{
public:
    StopEvents();

    bool isValid() const { return m_signals.isValid() && m_called.isValid(); }
    void wait() const;
    void call() const;

private:
    UniqueFd m_signals; // signalfd
    UniqueFd m_called;  // eventfd
};

} // namespace vorn
