#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace vorn {

// Runs jobs one at a time, in posting order, on the global queue's threads. Jobs posted before the
// queue's destruction still run. All methods may be called from any thread.
class SerialQueue
{
public:
    using Job = std::function<void()>;

    SerialQueue();
    ~SerialQueue();

    // True inside a job of this queue.
    bool isCurrent() const;

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

// Calls a handler on a serial queue, first after an interval and then again and again in the same
// interval, until cancel() or destruction. A queue that is busy for longer gets one call for all of
// the ticks that it missed. After a cancel() on the queue itself no call follows.
class QueueTimer
{
public:
    QueueTimer(const SerialQueue &queue, std::chrono::nanoseconds interval,
               std::function<void()> handler);
    ~QueueTimer();
    void cancel();

    QueueTimer(const QueueTimer &) = delete;
    QueueTimer &operator=(const QueueTimer &) = delete;

private:
    struct Shot;
    std::shared_ptr<Shot> m_shot;
};

} // namespace vorn
