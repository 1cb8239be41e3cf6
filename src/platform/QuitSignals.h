#pragma once

#include "platform/FileDescriptor.h"

#include <QSocketNotifier>

#include <memory>

namespace vorn {

// Ends the event loop on SIGINT, SIGTERM or SIGHUP, so that the program can clean up (close ports,
// restore their lines, write a report). Construct it before starting any thread, since threads
// inherit the blocked signals, and call watch() once the application exists. A second SIGINT or
// SIGTERM ends the program at once.
class QuitSignals
{
public:
    QuitSignals();
    QuitSignals(const QuitSignals &) = delete;
    QuitSignals &operator=(const QuitSignals &) = delete;

    void watch();

private:
    FileDescriptor m_fd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vorn
