#include "serial/PortLoop.h"

#include "platform/ThreadName.h"
#include "serial/PinPoll.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;

// A read of at least this much means a flood: more is on its way.
constexpr ssize_t kFlood = 1024;
// What is read in a flood before the main thread hears of it, since waking it costs more than the
// reading. Below the 128 KiB from which malloc() would map new memory each time.
constexpr std::size_t kReadSize = 98304;
// The kernel mostly refills its 4 KiB in less.
constexpr std::chrono::microseconds kRefillTime{50};

} // namespace

PortLoop::PortLoop(std::shared_ptr<ORSSerialPortPrivate> port,
                   std::shared_ptr<SerialTerminal> terminal)
    : m_port(std::move(port)), m_terminal(std::move(terminal))
{
}

void PortLoop::run()
{
    const ThreadName name("port " + m_port->path.section(u'/', -1).toStdString());
    std::make_shared<PinPoll>(m_port, m_terminal)->start();
    int error = 0;
    while (error == 0 && !m_terminal->isCloseRequested())
        error = waitAndRead();
    if (error == 0)
        error = m_terminal->goneError();
    if (error != 0)
        deviceIsGone(error);
    else
        m_port->terminalWasClosed(m_terminal->close(false));
}

int PortLoop::waitAndRead()
{
    std::array<pollfd, 2> waiting{
        {{m_terminal->descriptor(), POLLIN, 0}, {m_terminal->closeEvent(), POLLIN, 0}}};
    ::poll(waiting.data(), waiting.size(), -1);
    const bool hasNews = waiting[1].revents == 0 && waiting[0].revents != 0;
    return hasNews ? readWhatIsThere() : 0;
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
