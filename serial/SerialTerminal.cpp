#include "serial/SerialTerminal.h"

#include <QFile>

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;

// An adapter that takes nothing would hold the closing up for ever.
constexpr std::chrono::milliseconds kDrainLimit{1000};
// There is no event for "all output has left"; this is how often it is asked for.
constexpr int kDrainStepMs = 5;

int result(int returned)
{
    return returned < 0 ? errno : 0;
}

} // namespace

bool meansDeviceGone(int error)
{
    return error == ENXIO || error == EIO || error == ENODEV;
}

bool meansNoModemLines(int error)
{
    return error == ENOTTY || error == EINVAL;
}

int SerialTerminal::open(const QString &path)
{
    if (!m_closeEvent.isValid())
        return EMFILE;
    // The descriptor stays non-blocking: a blocked write could not be woken when the port closes.
    // writeAll() waits instead.
    FileDescriptor fd(
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.isValid())
        return errno;
    // Descriptor 0 stands for "closed" everywhere, so it cannot serve.
    if (fd.get() == 0)
        return EBADF;
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? EBUSY : errno;
    // Keeps out those who open the terminal without asking for the lock; the lock is what counts.
    ::ioctl(fd.get(), TIOCEXCL);

    termios attributes{};
    if (::tcgetattr(fd.get(), &attributes) == 0)
        m_originalAttributes = attributes;
    m_fd = std::move(fd);
    m_number = m_fd.get();
    lowerLatency();
    return 0;
}

// FTDI adapters hold a short answer back for 16 ms unless asked; a refusal costs only time.
void SerialTerminal::lowerLatency()
{
    serial_struct serial{};
    if (::ioctl(m_fd.get(), TIOCGSERIAL, &serial) != 0 || (serial.flags & ASYNC_LOW_LATENCY))
        return;
    const int flags = serial.flags;
    serial.flags |= ASYNC_LOW_LATENCY;
    if (::ioctl(m_fd.get(), TIOCSSERIAL, &serial) == 0)
        m_originalSerialFlags = flags;
}

bool SerialTerminal::canUse(const std::shared_lock<std::shared_mutex> &use) const
{
    return use.owns_lock() && m_fd.isValid();
}

int SerialTerminal::applySettings(const LineSettings &settings)
{
    const std::shared_lock lock(m_use, std::try_to_lock);
    return canUse(lock) ? applyLineSettings(m_fd.get(), settings) : 0;
}

int SerialTerminal::setModemLines(bool rts, bool dtr)
{
    const std::shared_lock lock(m_use, std::try_to_lock);
    if (!canUse(lock))
        return 0;
    int lines = 0;
    ::ioctl(m_fd.get(), TIOCMGET, &lines);
    lines = rts ? lines | TIOCM_RTS : lines & ~TIOCM_RTS;
    lines = dtr ? lines | TIOCM_DTR : lines & ~TIOCM_DTR;
    return result(::ioctl(m_fd.get(), TIOCMSET, &lines));
}

std::optional<int> SerialTerminal::modemLines(int &error)
{
    const std::shared_lock lock(m_use, std::try_to_lock);
    int lines = 0;
    error = canUse(lock) ? result(::ioctl(m_fd.get(), TIOCMGET, &lines)) : ECANCELED;
    return error == 0 ? std::optional(lines) : std::nullopt;
}

int SerialTerminal::writeAll(QByteArrayView bytes)
{
    const std::lock_guard whole(m_write);
    while (!bytes.isEmpty()) {
        const std::shared_lock lock(m_use, std::try_to_lock);
        if (m_closeRequested || !canUse(lock))
            return ECANCELED;
        const ssize_t written =
            ::write(m_fd.get(), bytes.data(), static_cast<size_t>(bytes.size()));
        if (written >= 0) {
            bytes = bytes.sliced(written);
            continue;
        }
        if (errno == EAGAIN) {
            std::array<pollfd, 2> waiting{
                {{m_fd.get(), POLLOUT, 0}, {m_closeEvent.descriptor(), POLLIN, 0}}};
            ::poll(waiting.data(), waiting.size(), -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void SerialTerminal::requestClose()
{
    m_closeRequested = true;
    m_closeEvent.set();
}

void SerialTerminal::waitForOutput()
{
    const auto deadline = Clock::now() + kDrainLimit;
    int waiting = 0;
    while (::ioctl(m_fd.get(), TIOCOUTQ, &waiting) == 0 && waiting > 0) {
        if (Clock::now() >= deadline) {
            ::tcflush(m_fd.get(), TCOFLUSH);
            return;
        }
        pollfd hangUp{m_fd.get(), 0, 0};
        if (::poll(&hangUp, 1, kDrainStepMs) > 0)
            return;
    }
}

// At once and never "after output drained", which waits for ever with an adapter that takes
// nothing.
void SerialTerminal::restoreLine()
{
    if (m_originalSerialFlags) {
        serial_struct serial{};
        if (::ioctl(m_fd.get(), TIOCGSERIAL, &serial) == 0) {
            serial.flags = *m_originalSerialFlags;
            ::ioctl(m_fd.get(), TIOCSSERIAL, &serial);
        }
    }
    termios attributes{};
    if (::tcgetattr(m_fd.get(), &attributes) == 0) {
        attributes.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
        ::tcsetattr(m_fd.get(), TCSANOW, &attributes);
    }
    if (m_originalAttributes)
        ::tcsetattr(m_fd.get(), TCSANOW, &*m_originalAttributes);
    ::ioctl(m_fd.get(), TIOCNXCL);
}

int SerialTerminal::close(bool deviceIsGone)
{
    requestClose();
    const std::unique_lock lock(m_use);
    if (!m_fd.isValid())
        return 0;
    if (!deviceIsGone) {
        waitForOutput();
        restoreLine();
    }
    return result(m_fd.reset());
}

} // namespace vorn
