#pragma once

#include "platform/FileDescriptor.h"

class QSocketNotifier;

#include <memory>

namespace vorn {

// Turns SIGINT, SIGTERM and SIGHUP into the end of the event loop, so that the program can clean up
// (close ports, restore their lines, write a report). Construct it before starting any thread,
// since threads inherit the blocked signals, and call watch() once there is an application. A
// second SIGINT or SIGTERM ends the program at once.
class QuitSignals
{
public:
    QuitSignals();
    ~QuitSignals();
    QuitSignals(const QuitSignals &) = delete;
    QuitSignals &operator=(const QuitSignals &) = delete;

    void watch();

private:
    FileDescriptor m_fd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vorn
