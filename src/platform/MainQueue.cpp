#include "platform/MainQueue.h"

#include "platform/GlobalQueue.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QThread>

#include <condition_variable>

namespace vorn {
struct MainQueue::Entry
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

void MainQueue::enqueue(const std::shared_ptr<Entry> &entry)
{
    bool isClosed = false;
    bool wasEmpty = false;
    {
        const std::lock_guard lock(m_mutex);
        isClosed = m_closed;
        wasEmpty = m_entries.empty();
        if (!isClosed)
            m_entries.push_back(entry);
    }
    if (isClosed)
        entry->finish(Entry::State::Dropped);
    else if (wasEmpty)
        m_wake.set();
}

void MainQueue::post(Job job)
{
    auto entry = std::make_shared<Entry>();
    entry->job = std::move(job);
    enqueue(entry);
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
    auto entry = std::make_shared<Entry>();
    entry->job = job;
    enqueue(entry);
    std::unique_lock lock(entry->mutex);
    entry->changed.wait(lock, [&] { return entry->state != Entry::State::Queued; });
    return entry->state == Entry::State::Done;
}

void MainQueue::drain()
{
    m_wake.clear();
    // At most as many jobs as were queued at the start, which leaves other events their turn.
    std::size_t limit = 0;
    {
        const std::lock_guard lock(m_mutex);
        limit = m_entries.size();
    }
    for (; limit > 0; --limit) {
        std::shared_ptr<Entry> entry;
        {
            const std::lock_guard lock(m_mutex);
            if (m_entries.empty())
                return;
            entry = std::move(m_entries.front());
            m_entries.pop_front();
            // Before the job runs: it may enter a nested event loop that waits for the rest.
            if (!m_entries.empty())
                m_wake.set();
        }
        entry->job();
        entry->job = nullptr;
        entry->finish(Entry::State::Done);
    }
}

void MainQueue::close()
{
    std::deque<std::shared_ptr<Entry>> dropped;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        dropped.swap(m_entries);
    }
    m_notifier.reset();
    for (const auto &entry : dropped)
        entry->finish(Entry::State::Dropped);
}

} // namespace vorn
