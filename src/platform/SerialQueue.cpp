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
    std::weak_ptr<const void> active; // the posted or current run; expires if it is dropped

    // If the system refuses a thread, the jobs run on a caller that waits; else they wait for one.
    void post(Job job, bool callerWaits)
    {
        std::shared_ptr<const void> token;
        {
            const std::lock_guard lock(mutex);
            jobs.push_back(std::move(job));
            if (!active.expired())
                return;
            token = std::make_shared<char>();
            active = token;
        }
        GlobalQueue &global = GlobalQueue::instance();
        const auto onThread = [self = shared_from_this(), token] { self->run(); };
        if (!(callerWaits ? global.tryPost(onThread) : global.post(onThread)))
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
        active.reset();
    }
};

SerialQueue::SerialQueue() : m_state(std::make_shared<State>()) {}

SerialQueue::~SerialQueue() = default;

void SerialQueue::post(Job job)
{
    m_state->post(std::move(job), /*callerWaits*/ false);
}

void SerialQueue::postAndWait(const Job &job)
{
    // Shared, since the waiting thread may return before the task has ended.
    const auto task = std::make_shared<std::packaged_task<void()>>(std::cref(job));
    std::future<void> done = task->get_future();
    m_state->post([task] { (*task)(); }, /*callerWaits*/ true);
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
                target->post(onQueue, /*callerWaits*/ false);
        });
}

QueueTimer::~QueueTimer()
{
    *m_isCancelled = true;
    GlobalQueue::instance().cancel(m_ticket);
}

} // namespace vorn
