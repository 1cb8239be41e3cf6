#pragma once

#include "platform/FileDescriptor.h"

class QSocketNotifier;

#include <memory>

namespace vorn {

// Makes SIGINT, SIGTERM and SIGHUP end the event loop, so that open ports are closed and their
// lines put back. To be made before any thread is started, since threads inherit what it blocks;
// watch() follows once there is an application. A second SIGINT or SIGTERM ends the program at
// once.
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
