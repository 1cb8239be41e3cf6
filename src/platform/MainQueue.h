#pragma once

#include "platform/Lifetime.h"
#include "platform/WakeEvent.h"

#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

class QSocketNotifier;

namespace vorn {

// Jobs for the main thread, whose Qt event loop runs them in posting order. Hand-offs are ordered
// by this class's own lock and an eventfd, never by Qt's event queue, so that ThreadSanitizer sees
// each of them.
//
// Jobs posted after close(), or while no event loop runs any more, are dropped.
class MainQueue
{
public:
    using Job = std::function<void()>;

    // The process's main queue. First called on the main thread once the QCoreApplication exists,
    // later on any thread.
    static MainQueue &instance();

    // True on the main thread.
    bool isCurrent() const;

    // Queues the job and returns at once. Any thread.
    void post(Job job);
    // The same for a job that uses an object of the main thread: dropped if that is gone by then.
    void post(const Lifetime::Token &object, Job job);

    // Runs the job on the main thread, at once if called there, and returns when it has run. False
    // if it was not run because the queue is closed. Any thread, but never while holding a lock
    // that a main-thread job may take.
    bool postAndWait(const Job &job);

    // Runs the jobs queued now. For a main thread that has left its event loop.
    void drain();

    // Drops all jobs and releases all threads in postAndWait(). Runs when the process ends.
    void close();

    MainQueue(const MainQueue &) = delete;
    MainQueue &operator=(const MainQueue &) = delete;

private:
    struct QueuedJob
    {
        Job job;
        std::promise<bool> wasRun;
    };

    MainQueue();
    ~MainQueue();
    void enqueue(QueuedJob queued);

    const std::thread::id m_thread;
    WakeEvent m_wake;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::mutex m_mutex;
    std::deque<QueuedJob> m_jobs;
    bool m_closed = false;
};

} // namespace vorn
