#pragma once

#include "platform/Lifetime.h"
#include "platform/WakeEvent.h"

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

class QSocketNotifier;

namespace vorn {

// The jobs that other threads hand to the main thread, run in posting order by Qt's event loop
// there. Hand-offs are ordered by this class's own lock and an eventfd, never by Qt's event queue,
// so that ThreadSanitizer sees every one of them.
//
// Jobs posted after close(), or while no event loop runs any more, are dropped.
class MainQueue
{
public:
    using Job = std::function<void()>;

    // The process's main queue. The first call must come from the main thread, after the
    // QCoreApplication was made; later calls may come from anywhere.
    static MainQueue &instance();

    // True on the thread whose event loop runs the jobs.
    bool isCurrent() const;

    // Queues the job and returns at once. Any thread.
    void post(Job job);
    // The same for a job that works on an object of the main thread: dropped when that is gone by
    // then.
    void post(const Lifetime::Token &object, Job job);

    // Runs the job on the main thread and returns when it has run; at once when already there.
    // False when the queue was closed and the job was not run. Any thread, but never with a lock
    // held that a main-thread job may take.
    bool postAndWait(const Job &job);

    // Runs what is queued now. For a main thread that leaves its event loop behind.
    void drain();

    // Drops what is queued and releases everybody who waits; called at the end of main().
    void close();

    MainQueue(const MainQueue &) = delete;
    MainQueue &operator=(const MainQueue &) = delete;

private:
    struct QueuedJob;

    MainQueue();
    ~MainQueue();
    void enqueue(const std::shared_ptr<QueuedJob> &queued);

    const std::thread::id m_thread;
    WakeEvent m_wake;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::mutex m_mutex;
    std::deque<std::shared_ptr<QueuedJob>> m_jobs;
    bool m_closed = false;
};

} // namespace vorn
