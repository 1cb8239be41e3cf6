#include "serial/SerialTerminal.h"

#include "serial/LineSpeed.h"

#include <QFile>

#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <limits>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;

// How long output may stand still: an adapter that accepts nothing would block the closing for
// ever.
constexpr std::chrono::milliseconds kDrainLimit{1000};
// The polling interval for output, since there is no event when all of it is sent.
constexpr int kDrainStepMs = 5;
constexpr int kLowLatency = static_cast<int>(ASYNC_LOW_LATENCY);

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
    if (const int error = m_closeEvent.error(); error != 0)
        return error;
    // The descriptor stays non-blocking: a blocked write could not be woken when the port closes.
    // writeAll() waits instead.
    FileDescriptor fd(
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.isValid())
        return errno;
    // 0 means "closed" everywhere, so this descriptor cannot be used.
    if (fd.get() == 0)
        return EBADF;
    if (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? EBUSY : errno;
    // Keeps out programs that ignore the lock. A failure does not matter.
    ::ioctl(fd.get(), TIOCEXCL);

    // Fails if the path is not a terminal.
    if (::tcgetattr(fd.get(), &m_originalAttributes) != 0)
        return errno;
    m_originalSpeed = outputSpeed(fd.get());
    m_fd = std::move(fd);
    m_number = m_fd.get();
    lowerLatency();
    return 0;
}

// FTDI adapters delay short answers by 16 ms by default. If the driver refuses, nothing else
// changes.
void SerialTerminal::lowerLatency()
{
    serial_struct serial{};
    if (::ioctl(m_fd.get(), TIOCGSERIAL, &serial) != 0 || (serial.flags & kLowLatency))
        return;
    const int flags = serial.flags;
    serial.flags |= kLowLatency;
    if (::ioctl(m_fd.get(), TIOCSSERIAL, &serial) == 0)
        m_originalSerialFlags = flags;
}

std::shared_lock<std::shared_mutex> SerialTerminal::use()
{
    std::shared_lock inUse(m_use, std::defer_lock);
    // Checked before, so that closing is not delayed, and after, since it may have happened.
    if (!m_closing && inUse.try_lock() && m_closing)
        inUse.unlock();
    return inUse;
}

int SerialTerminal::applySettings(const LineSettings &settings)
{
    const auto inUse = use();
    return inUse ? applyLineSettings(m_fd.get(), settings) : 0;
}

int SerialTerminal::setModemLines(bool rts, bool dtr)
{
    const auto inUse = use();
    if (!inUse)
        return 0;
    int lines = 0;
    ::ioctl(m_fd.get(), TIOCMGET, &lines);
    lines = rts ? lines | TIOCM_RTS : lines & ~TIOCM_RTS;
    lines = dtr ? lines | TIOCM_DTR : lines & ~TIOCM_DTR;
    return result(::ioctl(m_fd.get(), TIOCMSET, &lines));
}

std::optional<int> SerialTerminal::modemLines(int &error)
{
    const auto inUse = use();
    int lines = 0;
    error = inUse ? result(::ioctl(m_fd.get(), TIOCMGET, &lines)) : ECANCELED;
    return error == 0 ? std::optional(lines) : std::nullopt;
}

int SerialTerminal::writeAll(QByteArrayView bytes)
{
    const std::lock_guard whole(m_write);
    while (!bytes.isEmpty()) {
        const auto inUse = use();
        if (m_closeRequested || !inUse)
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

void SerialTerminal::requestCloseOfGoneDevice(int error)
{
    m_goneError = error;
    requestClose();
}

// The number of bytes in the driver, or 1 while only the adapter is still sending.
int SerialTerminal::outputLeft() const
{
    int waiting = 0;
    if (::ioctl(m_fd.get(), TIOCOUTQ, &waiting) == 0 && waiting > 0)
        return waiting;
    // The line gets another speed next, so the last byte must have left the adapter too; not every
    // driver can tell.
    unsigned transmitter = 0;
    return ::ioctl(m_fd.get(), TIOCSERGETLSR, &transmitter) == 0 && !(transmitter & TIOCSER_TEMT);
}

void SerialTerminal::waitForOutput()
{
    int least = std::numeric_limits<int>::max();
    Clock::time_point deadline;
    while (const int left = outputLeft()) {
        const auto now = Clock::now();
        if (left < least) {
            least = left;
            deadline = now + kDrainLimit;
        } else if (now >= deadline) {
            ::tcflush(m_fd.get(), TCOFLUSH);
            return;
        }
        pollfd hangUp{m_fd.get(), 0, 0};
        if (::poll(&hangUp, 1, kDrainStepMs) > 0)
            return;
    }
}

// At once and never after draining the output, which blocks for ever if the adapter accepts
// nothing.
void SerialTerminal::restoreLine()
{
    // The system lowers the lines at close only where the original attributes have HUPCL, and a
    // high RTS holds a device in reset.
    constexpr int kRts = TIOCM_RTS;
    if (::ioctl(m_fd.get(), TIOCMBIC, &kRts) != 0) // once more, since one USB transfer may fail
        ::ioctl(m_fd.get(), TIOCMBIC, &kRts);
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
    ::tcsetattr(m_fd.get(), TCSANOW, &m_originalAttributes);
    // termios does not hold non-standard speeds.
    if (outputSpeed(m_fd.get()) != m_originalSpeed)
        setArbitrarySpeed(m_fd.get(), m_originalSpeed);
    ::ioctl(m_fd.get(), TIOCNXCL);
}

int SerialTerminal::close(bool deviceIsGone)
{
    requestClose();
    m_closing = true;
    const std::unique_lock alone(m_use);
    if (!deviceIsGone) {
        waitForOutput();
        restoreLine();
    }
    return result(m_fd.reset());
}

} // namespace vorn
