#pragma once

#include <termios.h>

#include <cstdint>

namespace vorn {

// The settings of a serial line. Plain data; ranges are not checked here.
struct LineSettings
{
    std::uint32_t baudRate = 19200; // bits per second
    unsigned dataBits = 8;
    unsigned stopBits = 1;
    unsigned parity = 0; // 0 none, 1 odd, 2 even
    bool echo = false;
    bool rtsCts = false;
    // Linux terminals have no such handshakes: these are stored and do not change the line.
    bool dtrDsr = false;
    bool dcd = false;
    bool allowsNonStandardBaudRates = true;
};

// The terminal attributes for raw traffic with these settings, made from the current ones; all but
// the speed. Six data bits give the five-bit setting, and a count outside 5 to 8 likewise.
termios withLineSettings(termios attributes, const LineSettings &settings);

// Sets the line to the settings at once, trying the kernel's arbitrary speeds when the standard
// ones do not have the rate and the settings allow it. The speed is read back, since a driver may
// accept a rate that it cannot make and stay at another. 0, or the errno of the failure.
int applyLineSettings(int terminal, const LineSettings &settings);

} // namespace vorn
