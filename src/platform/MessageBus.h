#pragma once

#include <chrono>

namespace vorn {

// Disables the session bus and the system bus for this process, by setting its address to
// "disabled:", if the bus accepts connections but does not answer within the limit, which covers
// both buses. Connecting to such a bus blocks for ever, and Qt connects on its own while it creates
// the window and when the process ends. A working bus answers within a millisecond.
//
// Call it at the start of main(), before any thread is started and before the application object is
// created.
void disableSilentBuses(std::chrono::milliseconds limit = std::chrono::milliseconds(250));

} // namespace vorn
