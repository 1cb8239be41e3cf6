#include "serial/PortLoop.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <vector>

namespace vorn {
namespace {

constexpr std::chrono::milliseconds kPinPollInterval{10};
// The most that goes to the delegate in one piece.
constexpr ssize_t kPieceSize = 1024;
// Under a flood all that the kernel holds is taken at once (4 KiB, which it refills meanwhile), and
// the pieces go to the main thread together: each costs less than its hand-over would.
constexpr std::size_t kReadSize = 16384;
constexpr std::size_t kMostPieces = 64;

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
    std::vector<QByteArray> pieces;
    std::array<char, kReadSize> bytes;
    ssize_t count = 0;
    do {
        count = ::read(m_terminal->descriptor(), bytes.data(), bytes.size());
        for (ssize_t at = 0; at < count; at += kPieceSize)
            pieces.emplace_back(bytes.data() + at, std::min(count - at, kPieceSize));
    } while (count >= kPieceSize && pieces.size() < kMostPieces);
    // What ended the reading shows again with the next one.
    if (!pieces.empty()) {
        m_port->receiveData(pieces);
        return 0;
    }
    // A terminal that hung up is readable for ever and gives nothing; it must not be polled again.
    if (count == 0)
        return ENXIO;
    return errno == EAGAIN || errno == EINTR ? 0 : errno;
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
