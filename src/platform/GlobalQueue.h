#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vorn {

// The process's background threads. A job runs at once, on an idle thread or a new one, so that
// waiting jobs never delay others. All methods may be called from any thread.
class GlobalQueue
{
public:
    using Job = std::function<void()>;
    using Clock = std::chrono::steady_clock;
    // Identifies a scheduled job by its due time and a sequence number.
    using Ticket = std::pair<Clock::time_point, std::uint64_t>;

    static GlobalQueue &instance();

    // Runs the job in the background; while the system refuses another thread, the job waits for
    // one. Drops it and returns false after shutdown().
    bool post(Job job);
    // The same, but if the system refuses another thread, drops the job and returns false.
    bool tryPost(Job job) { return start(job); }

    // Posts the job at the given time, or after the given delay.
    Ticket postAt(Clock::time_point when, Job job);
    Ticket postAfter(Clock::duration delay, Job job)
    {
        return postAt(Clock::now() + delay, std::move(job));
    }
    // Removes a scheduled job; no effect if it has been posted already.
    void cancel(const Ticket &ticket);

    // Drops scheduled jobs and waits for running ones; to be called once nothing that a job might
    // wait for (the main queue, a port) can block it. Runs by itself when the process ends.
    void shutdown();

    GlobalQueue(const GlobalQueue &) = delete;
    GlobalQueue &operator=(const GlobalQueue &) = delete;

private:
    // A thread and its next job. Each has its own condition variable, so that no thread can consume
    // the wake-up of another.
    struct Worker
    {
        std::condition_variable jobGiven;
        Job job;
        std::thread thread;
    };

    GlobalQueue();
    ~GlobalQueue() { shutdown(); }
    // Moves the job to a thread, or leaves it and returns false.
    bool start(Job &job);
    // With m_mutex locked.
    Ticket schedule(Clock::time_point when, Job job);
    void work(Worker &self);
    void runScheduler();

    std::mutex m_mutex;
    std::vector<std::unique_ptr<Worker>> m_workers;
    std::vector<Worker *> m_idle; // the last one that worked is reused first
    bool m_stopping = false;

    std::condition_variable m_scheduleChanged;
    std::map<Ticket, Job> m_scheduled;
    std::uint64_t m_lastNumber = 0;
    std::thread m_scheduler;
};

} // namespace vorn
