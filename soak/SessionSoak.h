#pragma once

#include <chrono>

namespace vorn {

// Runs updates of simulated devices over pseudo-terminals, from open to close, for so long, with
// random disturbances. Prints the first that goes wrong, and then returns false. Main thread only.
bool soakSessions(unsigned firstSeed, std::chrono::seconds time);

// The same so often with this seed. It decides what happens, but not when the system runs which
// thread.
bool replaySession(unsigned seed, int times);

} // namespace vorn
