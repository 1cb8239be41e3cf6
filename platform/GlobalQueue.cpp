#include "platform/GlobalQueue.h"

namespace vorn {

GlobalQueue &GlobalQueue::instance()
{
    static GlobalQueue queue;
    return queue;
}

GlobalQueue::GlobalQueue() : m_scheduler([this] { runScheduler(); }) {}

GlobalQueue::~GlobalQueue()
{
    shutdown();
}

bool GlobalQueue::post(Job job)
{
    const std::lock_guard lock(m_mutex);
    if (m_stopping)
        return false;
    m_jobs.push_back(std::move(job));
    if (m_jobs.size() > m_idle)
        m_threads.emplace_back([this] { work(); });
    else
        m_jobPosted.notify_one();
    return true;
}

void GlobalQueue::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        ++m_idle;
        m_jobPosted.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
        --m_idle;
        if (m_jobs.empty())
            return;
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        job();
        job = nullptr;
        lock.lock();
    }
}

GlobalQueue::Ticket GlobalQueue::postAt(Clock::time_point when, Job job)
{
    const std::lock_guard lock(m_mutex);
    const Ticket ticket(when, ++m_lastNumber);
    if (m_stopping)
        return ticket;
    const auto placed = m_scheduled.emplace(ticket, std::move(job)).first;
    if (placed == m_scheduled.begin())
        m_scheduleChanged.notify_one();
    return ticket;
}

void GlobalQueue::cancel(const Ticket &ticket)
{
    Job dropped; // destroyed without the lock, since what it holds may post in its destructor
    const std::lock_guard lock(m_mutex);
    const auto found = m_scheduled.find(ticket);
    if (found != m_scheduled.end()) {
        dropped = std::move(found->second);
        m_scheduled.erase(found);
    }
}

void GlobalQueue::runScheduler()
{
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        if (m_scheduled.empty()) {
            m_scheduleChanged.wait(lock);
            continue;
        }
        const auto next = m_scheduled.begin();
        const Clock::time_point due = next->first.first;
        if (due > Clock::now()) {
            m_scheduleChanged.wait_until(lock, due);
            continue;
        }
        Job job = std::move(next->second);
        m_scheduled.erase(next);
        lock.unlock();
        post(std::move(job));
        lock.lock();
    }
}

void GlobalQueue::shutdown()
{
    std::map<Ticket, Job> dropped;
    std::vector<std::thread> threads;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        dropped.swap(m_scheduled);
        threads.swap(m_threads);
    }
    m_jobPosted.notify_all();
    m_scheduleChanged.notify_all();
    if (m_scheduler.joinable())
        m_scheduler.join();
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace vorn
