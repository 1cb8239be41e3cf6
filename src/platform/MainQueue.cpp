#include "platform/MainQueue.h"

#include "platform/GlobalQueue.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QThread>

#include <condition_variable>

namespace vorn {
struct MainQueue::QueuedJob
{
    enum class State { Queued, Done, Dropped };

    Job job;
    std::mutex mutex;
    std::condition_variable changed;
    State state = State::Queued;

    void finish(State end)
    {
        {
            const std::lock_guard lock(mutex);
            state = end;
        }
        changed.notify_all();
    }
};

MainQueue &MainQueue::instance()
{
    static MainQueue queue;
    return queue;
}

MainQueue::MainQueue() : m_thread(std::this_thread::get_id())
{
    Q_ASSERT(QCoreApplication::instance() &&
             QCoreApplication::instance()->thread() == QThread::currentThread());
    // Made first, so that it is still there when this queue ends.
    GlobalQueue::instance();
    m_notifier = std::make_unique<QSocketNotifier>(m_wake.descriptor(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { drain(); });
    // A notifier must not outlive the application's event dispatcher.
    QObject::connect(QCoreApplication::instance(), &QObject::destroyed, m_notifier.get(),
                     [this] { close(); });
}

// At the process's end. Background threads may be waiting for the main thread, and use this queue
// until they end.
MainQueue::~MainQueue()
{
    close();
    GlobalQueue::instance().shutdown();
}

bool MainQueue::isCurrent() const
{
    return std::this_thread::get_id() == m_thread;
}

void MainQueue::enqueue(const std::shared_ptr<QueuedJob> &queued)
{
    bool isClosed = false;
    bool wasEmpty = false;
    {
        const std::lock_guard lock(m_mutex);
        isClosed = m_closed;
        wasEmpty = m_jobs.empty();
        if (!isClosed)
            m_jobs.push_back(queued);
    }
    if (isClosed)
        queued->finish(QueuedJob::State::Dropped);
    else if (wasEmpty)
        m_wake.set();
}

void MainQueue::post(Job job)
{
    auto queued = std::make_shared<QueuedJob>();
    queued->job = std::move(job);
    enqueue(queued);
}

void MainQueue::post(const Lifetime::Token &object, Job job)
{
    post([object, job = std::move(job)] {
        if (!object.expired())
            job();
    });
}

bool MainQueue::postAndWait(const Job &job)
{
    if (isCurrent()) {
        job();
        return true;
    }
    auto queued = std::make_shared<QueuedJob>();
    queued->job = job;
    enqueue(queued);
    std::unique_lock lock(queued->mutex);
    queued->changed.wait(lock, [&] { return queued->state != QueuedJob::State::Queued; });
    return queued->state == QueuedJob::State::Done;
}

void MainQueue::drain()
{
    m_wake.clear();
    // At most as many jobs as were queued at the start, which leaves other events their turn.
    std::size_t limit = 0;
    {
        const std::lock_guard lock(m_mutex);
        limit = m_jobs.size();
    }
    for (; limit > 0; --limit) {
        std::shared_ptr<QueuedJob> queued;
        {
            const std::lock_guard lock(m_mutex);
            if (m_jobs.empty())
                return;
            queued = std::move(m_jobs.front());
            m_jobs.pop_front();
            // Before the job runs: it may enter a nested event loop that waits for the rest.
            if (!m_jobs.empty())
                m_wake.set();
        }
        queued->job();
        queued->job = nullptr;
        queued->finish(QueuedJob::State::Done);
    }
}

void MainQueue::close()
{
    std::deque<std::shared_ptr<QueuedJob>> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        dropped.swap(m_jobs);
    }
    m_notifier.reset();
    for (const auto &queued : dropped)
        queued->finish(QueuedJob::State::Dropped);
}

} // namespace vorn
