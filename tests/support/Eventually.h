#pragma once

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <chrono>
#include <concepts>
#include <ctime>

namespace vorn {

// Runs the event loop until the predicate holds; false when it does not within the limit, which is
// there for a hanging test only and so is generous.
template <std::predicate Predicate>
bool eventually(Predicate holds, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + limit;
    // What the predicate asks for may change on a thread that wakes nobody here.
    QTimer lookAgain;
    lookAgain.start(std::chrono::milliseconds(2));
    while (!holds()) {
        if (Clock::now() >= deadline)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// Runs the event loop for a while: for what must not happen.
inline void runEventLoopFor(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

// What the whole process has used of the processors.
inline std::chrono::nanoseconds processorTime()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace vorn
