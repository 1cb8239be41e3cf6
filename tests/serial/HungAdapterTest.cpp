// A terminal whose modem lines cannot be asked for, since the adapter does not answer: the kernel
// gives such a request up after 5 s, these only when they are told to.
#include "tests/serial/SerialPortFixture.h"

#include <sys/ioctl.h>
#include <sys/syscall.h>

#include <atomic>
#include <cstdarg>
#include <thread>

namespace {

std::atomic<bool> requestsHang = false;
std::atomic<int> hangingRequests = 0;

} // namespace

// In place of the C library's. Only background threads are held up.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (request == TIOCMGET && requestsHang && !vorn::MainQueue::instance().isCurrent()) {
        ++hangingRequests;
        while (requestsHang)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        --hangingRequests;
    }
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
}

namespace vorn {
namespace {

using HungAdapterTest = SerialPortFixture;

TEST_F(HungAdapterTest, BytesArriveAndTheTerminalIsNotClosedUnderTheRequest)
{
    requestsHang = true;
    openPort();
    EXPECT_TRUE(eventually([] { return hangingRequests == 1; }));
    m_terminal.send("x");
    m_delegate.expect({"data x"});
    m_port->close();
    runEventLoopFor(std::chrono::milliseconds(20));
    EXPECT_TRUE(holdsTerminal(m_terminal.path()));
    requestsHang = false;
    m_delegate.expect({"closed"});
}

} // namespace
} // namespace vorn
