#include "platform/SerialQueue.h"

#include "platform/GlobalQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace vorn {

struct SerialQueue::State : std::enable_shared_from_this<State>
{
    std::mutex mutex;
    std::deque<Job> jobs;
    bool running = false;
    std::thread::id runner;

    void post(Job job)
    {
        {
            const std::lock_guard lock(mutex);
            jobs.push_back(std::move(job));
            if (running)
                return;
            running = true;
        }
        // At the process's end, with the background threads gone, the caller does the work.
        if (!GlobalQueue::instance().post([self = shared_from_this()] { self->run(); }))
            run();
    }

    void run()
    {
        std::unique_lock lock(mutex);
        runner = std::this_thread::get_id();
        while (!jobs.empty()) {
            Job job = std::move(jobs.front());
            jobs.pop_front();
            lock.unlock();
            job();
            job = nullptr;
            lock.lock();
        }
        runner = {};
        running = false;
    }
};

SerialQueue::SerialQueue() : m_state(std::make_shared<State>()) {}

SerialQueue::~SerialQueue() = default;

bool SerialQueue::isCurrent() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->runner == std::this_thread::get_id();
}

void SerialQueue::post(Job job)
{
    m_state->post(std::move(job));
}

void SerialQueue::postAndWait(const Job &job)
{
    std::mutex mutex;
    std::condition_variable finished;
    bool done = false;
    m_state->post([&] {
        job();
        // Notified under the lock: the waiting frame is gone as soon as it sees `done`.
        const std::lock_guard lock(mutex);
        done = true;
        finished.notify_one();
    });
    std::unique_lock lock(mutex);
    finished.wait(lock, [&] { return done; });
}

struct QueueTimer::Shot : std::enable_shared_from_this<Shot>
{
    std::weak_ptr<SerialQueue::State> queue;
    std::chrono::nanoseconds interval{};
    std::function<void()> handler;
    std::mutex mutex;
    bool cancelled = false;
    bool posted = false; // a call is on the queue already
    GlobalQueue::Ticket ticket;

    void arm(GlobalQueue::Clock::time_point due)
    {
        const std::lock_guard lock(mutex);
        if (cancelled)
            return;
        ticket = GlobalQueue::instance().postAt(
            due, [self = shared_from_this(), due] { self->tick(due); });
    }

    void tick(GlobalQueue::Clock::time_point due)
    {
        bool isDue = false;
        {
            const std::lock_guard lock(mutex);
            isDue = !cancelled && !std::exchange(posted, true);
        }
        const auto target = queue.lock();
        if (isDue && target)
            target->post([self = shared_from_this()] { self->fire(); });
        // Ticks that were missed are left out, so that a queue that was busy, or a process that
        // was stopped, is not flooded with them afterwards.
        const auto late = std::max(GlobalQueue::Clock::now() - due, GlobalQueue::Clock::duration());
        arm(due + (late / interval + 1) * interval);
    }

    void fire()
    {
        {
            const std::lock_guard lock(mutex);
            posted = false;
            if (cancelled)
                return;
        }
        handler();
    }

    void cancel()
    {
        const std::lock_guard lock(mutex);
        if (!std::exchange(cancelled, true))
            GlobalQueue::instance().cancel(ticket);
    }
};

QueueTimer::QueueTimer(const SerialQueue &queue, std::chrono::nanoseconds interval,
                       std::function<void()> handler)
    : m_shot(std::make_shared<Shot>())
{
    m_shot->queue = queue.m_state;
    m_shot->interval = interval;
    m_shot->handler = std::move(handler);
    m_shot->arm(GlobalQueue::Clock::now() + interval);
}

QueueTimer::~QueueTimer()
{
    cancel();
}

void QueueTimer::cancel()
{
    m_shot->cancel();
}

} // namespace vorn
