#include "platform/SerialQueue.h"

#include <deque>
#include <future>
#include <mutex>
#include <utility>

namespace vorn {

struct SerialQueue::State : std::enable_shared_from_this<State>
{
    std::mutex mutex;
    std::deque<Job> jobs;
    bool running = false;

    void post(Job job)
    {
        {
            const std::lock_guard lock(mutex);
            jobs.push_back(std::move(job));
            if (running)
                return;
            running = true;
        }
        if (!GlobalQueue::instance().post([self = shared_from_this()] { self->run(); }))
            run();
    }

    void run()
    {
        std::unique_lock lock(mutex);
        while (!jobs.empty()) {
            Job job = std::move(jobs.front());
            jobs.pop_front();
            lock.unlock();
            job();
            job = nullptr;
            lock.lock();
        }
        running = false;
    }
};

SerialQueue::SerialQueue() : m_state(std::make_shared<State>()) {}

SerialQueue::~SerialQueue() = default;

void SerialQueue::post(Job job)
{
    m_state->post(std::move(job));
}

void SerialQueue::postAndWait(const Job &job)
{
    // Shared, since the waiting thread may return before the task has ended.
    const auto task = std::make_shared<std::packaged_task<void()>>(std::cref(job));
    std::future<void> done = task->get_future();
    m_state->post([task] { (*task)(); });
    done.get();
}

QueueTimer::QueueTimer(const SerialQueue &queue, std::chrono::nanoseconds delay,
                       std::function<void()> handler)
{
    const auto onQueue = [isCancelled = m_isCancelled, handler = std::move(handler)] {
        if (!*isCancelled)
            handler();
    };
    m_ticket =
        GlobalQueue::instance().postAfter(delay, [queue = std::weak_ptr(queue.m_state), onQueue] {
            if (const auto target = queue.lock())
                target->post(onQueue);
        });
}

QueueTimer::~QueueTimer()
{
    *m_isCancelled = true;
    GlobalQueue::instance().cancel(m_ticket);
}

} // namespace vorn
