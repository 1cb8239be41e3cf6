#include "serial/LineSpeed.h"

// Declares termios2, which holds any speed. Cannot be included together with <termios.h>, since
// both declare `termios`.
#include <asm/termbits.h>
#include <sys/ioctl.h>

#include <cerrno>

namespace vorn {

int setArbitrarySpeed(int terminal, std::uint32_t baudRate)
{
    termios2 attributes{};
    if (::ioctl(terminal, TCGETS2, &attributes) != 0)
        return errno;
    // An input speed of B0 means "as the output's".
    attributes.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CIBAUD);
    attributes.c_cflag |= BOTHER;
    attributes.c_ispeed = baudRate;
    attributes.c_ospeed = baudRate;
    return ::ioctl(terminal, TCSETS2, &attributes) == 0 ? 0 : errno;
}

std::uint32_t outputSpeed(int terminal)
{
    termios2 attributes{};
    return ::ioctl(terminal, TCGETS2, &attributes) == 0 ? attributes.c_ospeed : 0;
}

bool isCloseTo(std::uint32_t actual, std::uint32_t wanted)
{
    const std::uint32_t difference = actual > wanted ? actual - wanted : wanted - actual;
    return difference <= wanted / 50;
}

} // namespace vorn
