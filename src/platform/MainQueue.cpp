#include "platform/MainQueue.h"

#include "platform/GlobalQueue.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QThread>

#include <system_error>

namespace vorn {

MainQueue &MainQueue::instance()
{
    static MainQueue queue;
    return queue;
}

MainQueue::MainQueue() : m_thread(std::this_thread::get_id())
{
    Q_ASSERT(QCoreApplication::instance() &&
             QCoreApplication::instance()->thread() == QThread::currentThread());
    if (const int error = m_wake.error(); error != 0)
        throw std::system_error(error, std::generic_category());
    // Created first, so that it still exists when this queue is destroyed.
    GlobalQueue::instance();
    m_notifier = std::make_unique<QSocketNotifier>(m_wake.descriptor(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, [this] { drain(); });
    // A notifier must not outlive the application's event dispatcher.
    QObject::connect(QCoreApplication::instance(), &QObject::destroyed, m_notifier.get(),
                     [this] { close(); });
}

// Runs when the process ends. Background threads may be waiting for the main thread, and use this
// queue until they end.
MainQueue::~MainQueue()
{
    close();
    GlobalQueue::instance().shutdown();
}

bool MainQueue::isCurrent() const
{
    return std::this_thread::get_id() == m_thread;
}

void MainQueue::enqueue(QueuedJob queued)
{
    const std::lock_guard lock(m_mutex);
    if (m_closed) {
        queued.wasRun.set_value(false);
        return;
    }
    if (m_jobs.empty())
        m_wake.set();
    m_jobs.push_back(std::move(queued));
}

void MainQueue::post(Job job)
{
    enqueue({std::move(job), {}});
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
    QueuedJob queued{job, {}};
    std::future<bool> wasRun = queued.wasRun.get_future();
    enqueue(std::move(queued));
    return wasRun.get();
}

void MainQueue::drain()
{
    m_wake.clear();
    // Only as many jobs as are queued now, so that other events get their turn.
    std::size_t limit = 0;
    {
        const std::lock_guard lock(m_mutex);
        limit = m_jobs.size();
    }
    for (; limit > 0; --limit) {
        QueuedJob queued;
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
        queued.job();
        queued.job = nullptr;
        queued.wasRun.set_value(true);
    }
}

void MainQueue::close()
{
    std::deque<QueuedJob> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        dropped.swap(m_jobs);
    }
    m_notifier.reset();
    for (QueuedJob &queued : dropped)
        queued.wasRun.set_value(false);
}

} // namespace vorn
