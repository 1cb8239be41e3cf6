#include "serial/PortLoop.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace vorn {
namespace {

constexpr std::chrono::milliseconds kPinPollInterval{10};
// A read of at least this much means a flood: more is on its way.
constexpr ssize_t kFlood = 1024;
// What is read in a flood before the main thread hears of it, since waking it costs more than the
// reading. Below the 128 KiB from which malloc() would map new memory each time.
constexpr std::size_t kReadSize = 98304;
// The kernel mostly refills its 4 KiB in less.
constexpr std::chrono::microseconds kRefillTime{50};

struct InputPin
{
    int mask;
    std::atomic<bool> ORSSerialPortPrivate::*state;
    void (ORSSerialPort::*changed)();
};
// In the order in which their changes are told.
constexpr std::array kInputPins{
    InputPin{TIOCM_CTS, &ORSSerialPortPrivate::cts, &ORSSerialPort::CTSChanged},
    InputPin{TIOCM_DSR, &ORSSerialPortPrivate::dsr, &ORSSerialPort::DSRChanged},
    InputPin{TIOCM_CAR, &ORSSerialPortPrivate::dcd, &ORSSerialPort::DCDChanged},
};

} // namespace

PortLoop::PortLoop(std::shared_ptr<ORSSerialPortPrivate> port,
                   std::shared_ptr<SerialTerminal> terminal)
    : m_port(std::move(port)), m_terminal(std::move(terminal))
{
}

void PortLoop::run()
{
    while (!m_terminal->isCloseRequested()) {
        if (const int error = waitAndHandle(); error != 0) {
            deviceIsGone(error);
            return;
        }
    }
    m_port->terminalWasClosed(m_terminal->close(false));
}

int PortLoop::millisecondsToPinPoll() const
{
    if (!m_pollsPins)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_nextPinPoll - Clock::now());
    return static_cast<int>(std::max<std::int64_t>(left.count(), 0));
}

int PortLoop::waitAndHandle()
{
    std::array<pollfd, 2> waiting{
        {{m_terminal->descriptor(), POLLIN, 0}, {m_terminal->closeEvent(), POLLIN, 0}}};
    ::poll(waiting.data(), waiting.size(), millisecondsToPinPoll());
    if (waiting[1].revents != 0)
        return 0;
    int error = waiting[0].revents != 0 ? readWhatIsThere() : 0;
    if (error == 0 && m_pollsPins && Clock::now() >= m_nextPinPoll)
        error = pollPins();
    return error;
}

int PortLoop::readWhatIsThere()
{
    QByteArray bytes(kReadSize, Qt::Uninitialized);
    std::size_t filled = 0;
    ssize_t count = 0;
    do {
        count = ::read(m_terminal->descriptor(), bytes.data() + filled, kReadSize - filled);
        filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    } while (count >= kFlood && filled < kReadSize && isRefilled());
    // What ended the reading shows again with the next one.
    if (filled > 0) {
        bytes.truncate(static_cast<qsizetype>(filled));
        bytes.squeeze();
        m_port->receiveData(bytes);
        return 0;
    }
    // A terminal that hung up is readable for ever and gives nothing; it must not be polled again.
    if (count == 0)
        return ENXIO;
    return errno == EAGAIN || errno == EINTR ? 0 : errno;
}

// To ask by read() or poll() would put this thread to sleep until the kernel's worker is done, and
// in a flood that costs more than the time it takes.
bool PortLoop::isRefilled() const
{
    const auto deadline = Clock::now() + kRefillTime;
    int waiting = 0;
    while (::ioctl(m_terminal->descriptor(), FIONREAD, &waiting) == 0 && waiting < kFlood)
        if (Clock::now() >= deadline)
            return false;
    return waiting >= kFlood;
}

int PortLoop::pollPins()
{
    m_nextPinPoll = Clock::now() + kPinPollInterval;
    int error = 0;
    const std::optional<int> lines = m_terminal->modemLines(error);
    if (lines) {
        updatePins(*lines);
        return 0;
    }
    if (meansDeviceGone(error))
        return error;
    m_pollsPins = !meansNoModemLines(error);
    m_port->notifyOfModemLineError(*m_terminal, error);
    return 0;
}

// Not waited for, though the change happens on the main thread: while that one is busy, the bytes
// that arrive here must still be read before the kernel's buffer is full.
void PortLoop::updatePins(int lines)
{
    const int changedLines = std::exchange(m_port->polledLines, lines) ^ lines;
    for (const InputPin &pin : kInputPins) {
        if (!(changedLines & pin.mask))
            continue;
        MainQueue::instance().post([port = m_port, pin, isOn = (lines & pin.mask) != 0] {
            (*port).*pin.state = isOn;
            port->emitOnMain(pin.changed);
        });
    }
}

void PortLoop::deviceIsGone(int error)
{
    // Before anybody is told: an open descriptor keeps its name from the adapter when it comes
    // back.
    const int closeError = m_terminal->close(true);
    m_port->notifyDelegateOfPosixErrorWaitingUntilDone(error, true);
    m_port->tellOfRemoval();
    m_port->terminalWasClosed(closeError);
}

} // namespace vorn
