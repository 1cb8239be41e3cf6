#pragma once

#include <cstdint>

namespace vorn {

// Sets input and output speed to any number of bits per second (the kernel's arbitrary-speed
// interface). Returns 0, or an errno.
int setArbitrarySpeed(int terminal, std::uint32_t baudRate);

// The output speed that the driver reports, in bits per second; 0 when it cannot be read.
std::uint32_t outputSpeed(int terminal);

// Whether two ends at these speeds understand each other: drivers round to the nearest divisor, and
// UARTs tolerate a difference of about 2 %.
bool isCloseTo(std::uint32_t actual, std::uint32_t wanted);

} // namespace vorn
