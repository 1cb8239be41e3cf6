#pragma once

#include "platform/FileDescriptor.h"

#include <QSocketNotifier>

#include <memory>

namespace vorn {

// Decides what a signal does. Called in the main thread's event loop.
class QuitSignalsObserver
{
public:
    // SIGINT, SIGTERM or SIGHUP arrived. True if the program ends now: from then on SIGINT and
    // SIGTERM kill it, in case that its clean-up hangs.
    virtual bool quitSignalDidArrive(int signal) = 0;

protected:
    ~QuitSignalsObserver() = default;
};

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
    // Leaves the decision to the observer, which must exist as long as the event loop runs.
    void watch(QuitSignalsObserver &observer);
    // Lets the signals kill the program until watch() is called: for what precedes or follows the
    // event loop and may hang. After watch(), SIGHUP remains blocked, since a closing terminal
    // sends it more than once.
    void letKill();

private:
    FileDescriptor m_fd;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vorn
