#include "platform/ExitLimit.h"

#include "platform/Log.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

namespace vorn {
namespace {

// Two seconds, less the time that the process needs to exit.
constexpr timespec kLimit{.tv_sec = 1, .tv_nsec = 900'000'000};

} // namespace

void limitExit(int exitCode)
{
    struct sigaction action
    {
    };
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = [](int, siginfo_t *info, void *) { ::_exit(info->si_value.sival_int); };
    ::sigaction(SIGALRM, &action, nullptr);
    sigevent event{};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGALRM;
    event.sigev_value.sival_int = exitCode;
    timer_t timer{}; // lasts as long as the process
    const itimerspec limit{.it_interval = {}, .it_value = kLimit};
    if (::timer_create(CLOCK_MONOTONIC, &event, &timer) != 0 ||
        ::timer_settime(timer, 0, &limit, nullptr) != 0)
        qCWarning(logPlatform, "the end of the program has no limit: %s", std::strerror(errno));
}

} // namespace vorn
