#include "simulator/PseudoTerminal.h"

#include <QFile>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace vorn {

namespace {

bool makeRaw(int fd)
{
    termios settings{};
    if (::tcgetattr(fd, &settings) != 0)
        return false;
    ::cfmakeraw(&settings);
    return ::tcsetattr(fd, TCSANOW, &settings) == 0;
}

} // namespace

std::optional<PseudoTerminal> PseudoTerminal::open(QString *problem)
{
    const auto fail = [&](const char *what) {
        const std::error_code error(errno, std::generic_category());
        *problem = QStringLiteral("%1: %2").arg(QLatin1String(what),
                                                QString::fromStdString(error.message()));
        return std::nullopt;
    };
    PseudoTerminal terminal;
    terminal.m_master = UniqueFd(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!terminal.m_master.isValid())
        return fail("no pseudo-terminal");
    std::array<char, 64> path{};
    const int master = terminal.m_master.get();
    if (::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
        ::ptsname_r(master, path.data(), path.size()) != 0)
        return fail("no terminal behind the pseudo-terminal");
    terminal.m_slavePath = QFile::decodeName(path.data());
    terminal.m_slave = UniqueFd(::open(path.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!terminal.m_slave.isValid() || !makeRaw(terminal.m_slave.get()))
        return fail("the terminal cannot be opened");
    if (::fcntl(master, F_SETFL, O_NONBLOCK) != 0)
        return fail("the pseudo-terminal cannot be set to non-blocking");
    return terminal;
}

void PseudoTerminal::endExclusiveUse() const
{
    ::ioctl(m_slave.get(), TIOCNXCL);
}

void PseudoTerminal::discardUnread() const
{
    ::tcflush(m_slave.get(), TCIFLUSH);
}

bool PseudoTerminal::holdsUnread() const
{
    int count = 0;
    return ::ioctl(m_slave.get(), FIONREAD, &count) == 0 && count > 0;
}

} // namespace vorn
