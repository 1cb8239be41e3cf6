#pragma once

#include <cstdint>

namespace vorn {

// The kernel's arbitrary-speed interface: sets input and output speed to the given bits per second
// and leaves the other attributes. 0, or an errno.
int setArbitrarySpeed(int terminal, std::uint32_t baudRate);

// The output speed that the driver reports, in bits per second; 0 when it cannot be read.
std::uint32_t outputSpeed(int terminal);

} // namespace vorn
