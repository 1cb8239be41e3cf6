#include "simulator/StopEvents.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace vorn {

StopEvents::StopEvents() : m_called(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    sigset_t stops;
    ::sigemptyset(&stops);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaddset(&stops, signal);
    ::pthread_sigmask(SIG_BLOCK, &stops, nullptr);
    m_signals = UniqueFd(::signalfd(-1, &stops, SFD_CLOEXEC));
    // A reader of the output that goes away must not cost the report's file.
    ::signal(SIGPIPE, SIG_IGN);
}

void StopEvents::wait() const
{
    std::array<pollfd, 2> fds{{{m_signals.get(), POLLIN, 0}, {m_called.get(), POLLIN, 0}}};
    while (::poll(fds.data(), fds.size(), -1) < 0 && errno == EINTR) {
    }
}

void StopEvents::call() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_called.get(), &one, sizeof one);
}

} // namespace vorn
