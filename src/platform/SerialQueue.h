#pragma once

#include "platform/GlobalQueue.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace vorn {

// Runs jobs one at a time, in posting order, on the global queue's threads. Jobs posted before the
// queue is destroyed still run. After GlobalQueue::shutdown() the posting thread runs them. Any
// thread.
class SerialQueue
{
public:
    using Job = std::function<void()>;

    SerialQueue();
    ~SerialQueue();

    void post(Job job);
    // Returns when the job has run; runs it on the calling thread if the system refuses another
    // one. Must not be called by a job of this queue.
    void postAndWait(const Job &job);

    SerialQueue(const SerialQueue &) = delete;
    SerialQueue &operator=(const SerialQueue &) = delete;

private:
    friend class QueueTimer;
    struct State;
    std::shared_ptr<State> m_state;
};

// Calls a handler once on a serial queue after a delay, unless it is destroyed first. Destroyed in
// a job of the queue, it makes no call after that.
class QueueTimer
{
public:
    QueueTimer(const SerialQueue &queue, std::chrono::nanoseconds delay,
               std::function<void()> handler);
    ~QueueTimer();

    QueueTimer(const QueueTimer &) = delete;
    QueueTimer &operator=(const QueueTimer &) = delete;

private:
    GlobalQueue::Ticket m_ticket;
    std::shared_ptr<std::atomic<bool>> m_isCancelled = std::make_shared<std::atomic<bool>>(false);
};

} // namespace vorn
