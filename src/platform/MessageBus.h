#pragma once

#include <chrono>

namespace vorn {

// Leaves the session's and the system's message bus out for this process (its address becomes
// "disabled:") when it accepts a connection but does not answer within the limit, both together.
// Whoever connects to such a bus waits for ever: this program's own classes and Qt's alike, which
// do so while the window is made and when the process ends. A bus that answers does so within a
// millisecond.
//
// To be called at the start of main(), before there are other threads and before the application
// object is made.
void disableSilentBuses(std::chrono::milliseconds limit = std::chrono::milliseconds(250));

} // namespace vorn
