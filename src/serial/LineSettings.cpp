#include "serial/LineSettings.h"

#include "serial/LineSpeed.h"

#include <cerrno>

namespace vorn {
namespace {

void setFlag(tcflag_t &flags, tcflag_t flag, bool on)
{
    if (on)
        flags |= flag;
    else
        flags &= ~flag;
}

// 0, or why the line has another speed than the wanted one.
int speedError(int terminal, std::uint32_t wanted)
{
    errno = EINVAL; // unless the speed cannot be read
    return isCloseTo(outputSpeed(terminal), wanted) ? 0 : errno;
}

} // namespace

termios withLineSettings(termios attributes, const LineSettings &settings)
{
    cfmakeraw(&attributes);
    // cfmakeraw() leaves these, which make the kernel insert XOFF bytes and change or drop
    // characters.
    attributes.c_iflag &= ~static_cast<tcflag_t>(IXOFF | IXANY | INPCK | IGNPAR | IUCLC);
    attributes.c_cc[VMIN] = 1;
    attributes.c_cc[VTIME] = 2;

    attributes.c_cflag &= ~static_cast<tcflag_t>(CSIZE);
    if (settings.dataBits == 7)
        attributes.c_cflag |= CS7;
    else if (settings.dataBits == 8)
        attributes.c_cflag |= CS8;

    // Would turn odd and even parity into mark and space.
    attributes.c_cflag &= ~static_cast<tcflag_t>(CMSPAR);
    setFlag(attributes.c_cflag, PARENB, settings.parity != 0);
    if (settings.parity != 0)
        setFlag(attributes.c_cflag, PARODD, settings.parity == 1);
    setFlag(attributes.c_cflag, CSTOPB, settings.stopBits >= 2);

    setFlag(attributes.c_cflag, CRTSCTS, settings.rtsCts);
    attributes.c_cflag |= HUPCL | CLOCAL | CREAD;
    setFlag(attributes.c_lflag, ECHO, settings.echo);
    return attributes;
}

int applyLineSettings(int terminal, const LineSettings &settings)
{
    termios attributes{};
    if (::tcgetattr(terminal, &attributes) != 0)
        return errno;
    attributes = withLineSettings(attributes, settings);

    const bool isStandardSpeed = ::cfsetspeed(&attributes, settings.baudRate) == 0;
    if (::tcsetattr(terminal, TCSANOW, &attributes) != 0)
        return errno;

    int error = isStandardSpeed ? speedError(terminal, settings.baudRate) : EINVAL;
    if (error != 0 && settings.allowsNonStandardBaudRates) {
        error = setArbitrarySpeed(terminal, settings.baudRate);
        if (error == 0)
            error = speedError(terminal, settings.baudRate);
    }
    return error;
}

} // namespace vorn
