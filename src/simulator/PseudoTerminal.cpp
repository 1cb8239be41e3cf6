#include "simulator/PseudoTerminal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace vorn {

PseudoTerminal::~PseudoTerminal()
{
    if (!m_link.isEmpty() && QFile::symLinkTarget(m_link) == m_slavePath)
        QFile::remove(m_link);
}

bool PseudoTerminal::open(const QString &directory, const QString &name, QString *problem)
{
    m_master = FileDescriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    std::array<char, 64> path{};
    if (!m_master.isValid() || ::grantpt(m_master.get()) != 0 || ::unlockpt(m_master.get()) != 0 ||
        ::ptsname_r(m_master.get(), path.data(), path.size()) != 0) {
        *problem =
            QStringLiteral("no pseudo-terminal: %1").arg(QLatin1String(std::strerror(errno)));
        return false;
    }
    m_slavePath = QFile::decodeName(path.data());
    m_slave = FileDescriptor(::open(path.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios settings{};
    if (!m_slave.isValid() || ::tcgetattr(m_slave.get(), &settings) != 0) {
        *problem = QStringLiteral("%1: %2").arg(m_slavePath, QLatin1String(std::strerror(errno)));
        return false;
    }
    ::cfmakeraw(&settings);
    ::tcsetattr(m_slave.get(), TCSANOW, &settings);

    // Watched before the link shows the terminal to anyone, so that no opening is missed.
    m_watch = FileDescriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    if (::inotify_add_watch(m_watch.get(), path.data(),
                            IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0)
        m_watch.reset();
    if (name.isEmpty())
        return true;
    const QString link = QDir(QDir(directory).absolutePath()).filePath(name);
    const QFileInfo present(link);
    if (present.isSymLink() && !present.exists())
        QFile::remove(link);
    QFile terminal(m_slavePath);
    if (!terminal.link(link)) {
        *problem = QStringLiteral("%1: %2").arg(link, terminal.errorString());
        return false;
    }
    m_link = link;
    return true;
}

int PseudoTerminal::takeUses()
{
    int opens = 0;
    bool handover = false; // the last user left or the first one came
    std::array<std::byte, 4096> buffer{};
    ssize_t got = 0;
    while ((got = ::read(m_watch.get(), buffer.data(), buffer.size())) > 0) {
        for (std::size_t at = 0; at < static_cast<std::size_t>(got);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += sizeof event + event.len;
            if ((event.mask & IN_OPEN) != 0) {
                handover = handover || m_users == 0;
                ++m_users;
                ++opens;
            } else if ((event.mask & (IN_CLOSE_WRITE | IN_CLOSE_NOWRITE)) != 0) {
                m_users = std::max(m_users - 1, 0);
                handover = handover || m_users == 0;
            }
        }
    }
    if (handover)
        ::tcflush(m_slave.get(), TCIFLUSH);
    if (handover && m_users == 0)
        ::ioctl(m_slave.get(), TIOCNXCL);
    return opens;
}

bool PseudoTerminal::holdsUnread() const
{
    // What was written to the master reaches the slave's queue a little later, by a worker of the
    // kernel; poll(2) on an empty queue waits for that worker, FIONREAD does not.
    pollfd slave{m_slave.get(), POLLIN, 0};
    ::poll(&slave, 1, 0);
    int count = 0;
    return ::ioctl(m_slave.get(), FIONREAD, &count) == 0 && count > 0;
}

} // namespace vorn
