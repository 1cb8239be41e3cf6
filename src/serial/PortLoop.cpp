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

// A read of at least this many bytes is part of a flood: more are on their way.
constexpr ssize_t kFlood = 1024;
// In a flood, so many bytes are collected before they are passed on, since waking the main thread
// costs more than reading. Below the 128 KiB from which malloc() would map new memory each time.
constexpr std::size_t kReadSize = 98304;
// The kernel usually refills its 4 KiB buffer in less.
constexpr std::chrono::microseconds kRefillTime{50};

// Asking by read() or poll() would put this thread to sleep until the kernel's worker is done. In a
// flood that takes longer than polling.
bool isRefilled(int descriptor)
{
    const auto deadline = Clock::now() + kRefillTime;
    int waiting = 0;
    while (::ioctl(descriptor, FIONREAD, &waiting) == 0 && waiting < kFlood)
        if (Clock::now() >= deadline)
            return false;
    return waiting >= kFlood;
}

// This and the next return 0, or the errno that shows that the device is gone.
int readAvailable(int descriptor, ORSSerialPortPrivate &port)
{
    QByteArray bytes(kReadSize, Qt::Uninitialized);
    std::size_t filled = 0;
    ssize_t count = 0;
    do {
        count = ::read(descriptor, bytes.data() + filled, kReadSize - filled);
        filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    } while (count >= kFlood && filled < kReadSize && isRefilled(descriptor));
    // An error behind these bytes is seen by the next read.
    if (filled > 0) {
        bytes.truncate(static_cast<qsizetype>(filled));
        bytes.squeeze();
        port.receiveData(bytes);
        return 0;
    }
    // A terminal that hung up is readable for ever and yields nothing; it must not be polled again.
    if (count == 0)
        return ENXIO;
    return errno == EAGAIN || errno == EINTR ? 0 : errno;
}

int waitAndRead(const SerialTerminal &terminal, ORSSerialPortPrivate &port)
{
    std::array<pollfd, 2> waiting{
        {{terminal.descriptor(), POLLIN, 0}, {terminal.closeEvent(), POLLIN, 0}}};
    ::poll(waiting.data(), waiting.size(), -1);
    const bool hasNews = waiting[1].revents == 0 && waiting[0].revents != 0;
    return hasNews ? readAvailable(terminal.descriptor(), port) : 0;
}

} // namespace

void runPortLoop(ORSSerialPortPrivate &port, const std::shared_ptr<SerialTerminal> &terminal)
{
    const ThreadName name("port " + port.path.section(u'/', -1).toStdString());
    startPinPoll(port.shared_from_this(), terminal);
    int error = 0;
    while (error == 0 && !terminal->isCloseRequested())
        error = waitAndRead(*terminal, port);
    if (error == 0)
        error = terminal->goneError();
    // Before the delegate is called: an open descriptor keeps its name from the adapter when it is
    // plugged in again.
    const int closeError = terminal->close(error != 0);
    if (error != 0) {
        port.notifyDelegateOfPosixErrorWaitingUntilDone(error, true);
        port.notifyOfRemoval();
    }
    port.terminalWasClosed(closeError);
}

} // namespace vorn
