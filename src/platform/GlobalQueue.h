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
// jobs that wait never keep others from running. All methods may be called from any thread.
class GlobalQueue
{
public:
    using Job = std::function<void()>;
    using Clock = std::chrono::steady_clock;
    // Names a scheduled job: its due time and a running number.
    using Ticket = std::pair<Clock::time_point, std::uint64_t>;

    static GlobalQueue &instance();

    // Runs the job in the background. False, with the job dropped, after shutdown() and when the
    // system refuses another thread.
    bool post(Job job);

    // Posts the job at the given time, or after the given delay.
    Ticket postAt(Clock::time_point when, Job job);
    Ticket postAfter(Clock::duration delay, Job job)
    {
        return postAt(Clock::now() + delay, std::move(job));
    }
    // Takes a scheduled job back; does nothing when it was posted already.
    void cancel(const Ticket &ticket);

    // Drops what is scheduled and waits for the jobs that run; called once nothing that a job might
    // wait for (the main queue, a port) can hold it any more. Runs by itself at the process's end.
    void shutdown();

    GlobalQueue(const GlobalQueue &) = delete;
    GlobalQueue &operator=(const GlobalQueue &) = delete;

private:
    // A thread, and the job that it is to run next. Each waits for an event of its own, so that no
    // thread can take the wake-up that another one was given.
    struct Worker
    {
        std::condition_variable jobGiven;
        Job job;
        std::thread thread;
    };

    GlobalQueue();
    ~GlobalQueue();
    // Gives the job to a thread, or leaves it and returns false.
    bool start(Job &job);
    void work(Worker &self);
    void runScheduler();

    std::mutex m_mutex;
    std::vector<std::unique_ptr<Worker>> m_workers;
    std::vector<Worker *> m_idle; // the one that worked last is the first to work again
    bool m_stopping = false;

    std::condition_variable m_scheduleChanged;
    std::map<Ticket, Job> m_scheduled;
    std::uint64_t m_lastNumber = 0;
    std::thread m_scheduler;
};

} // namespace vorn
