#pragma once

#include "soak/Tally.h"
#include "soak/UpdateCase.h"

#include <chrono>

namespace vorn {

// Runs random updates over scripted lines on all processors for so long; the seeds count up from
// the given one. Prints the first that ends otherwise than it must, and the smallest like it; then
// returns false. An update that hangs ends the process.
bool soakScripted(unsigned firstSeed, std::chrono::seconds time);

// The same with this case alone.
bool replay(const UpdateCase &made);

} // namespace vorn
