#pragma once

#include <termios.h>

#include <cstdint>

namespace vorn {

// The settings of a serial line. Ranges are not checked here.
struct LineSettings
{
    std::uint32_t baudRate = 19200; // bits per second
    unsigned dataBits = 8;
    unsigned stopBits = 1;
    unsigned parity = 0; // 0 none, 1 odd, 2 even
    bool echo = false;
    bool rtsCts = false;
    // Stored only: Linux terminals have no such handshakes.
    bool dtrDsr = false;
    bool dcd = false;
    bool allowsNonStandardBaudRates = true;
};

// Changes the attributes to raw mode with these settings, all but the speed. Six data bits, and
// counts outside 5 to 8, yield five.
termios withLineSettings(termios attributes, const LineSettings &settings);

// Applies the settings at once; a non-standard speed, if allowed, by the kernel's arbitrary-speed
// interface. The speed is read back, since a driver may accept a rate that it cannot make and use
// another. Returns 0, or the errno of the failure.
int applyLineSettings(int terminal, const LineSettings &settings);

} // namespace vorn
