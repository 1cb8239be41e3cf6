#pragma once

#include "platform/GlobalQueue.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace vorn {

// Runs jobs one at a time, in posting order, on the global queue's threads. Jobs posted before the
// queue's destruction still run. When no thread can be had (at the process's end, say), the poster
// runs the jobs itself. All methods may be called from any thread.
class SerialQueue
{
public:
    using Job = std::function<void()>;

    SerialQueue();
    ~SerialQueue();

    void post(Job job);
    // Returns when the job has run. Not to be called from a job of this queue.
    void postAndWait(const Job &job);

    SerialQueue(const SerialQueue &) = delete;
    SerialQueue &operator=(const SerialQueue &) = delete;

private:
    friend class QueueTimer;
    struct State;
    std::shared_ptr<State> m_state;
};

// Calls a handler once on a serial queue after a delay (at once when that is zero), unless it is
// cancelled or destroyed first. After a cancel() on the queue itself no call follows.
class QueueTimer
{
public:
    QueueTimer(const SerialQueue &queue, std::chrono::nanoseconds delay,
               std::function<void()> handler);
    ~QueueTimer();
    void cancel();

    QueueTimer(const QueueTimer &) = delete;
    QueueTimer &operator=(const QueueTimer &) = delete;

private:
    GlobalQueue::Ticket m_ticket;
    std::shared_ptr<std::atomic<bool>> m_isCancelled = std::make_shared<std::atomic<bool>>(false);
};

} // namespace vorn
