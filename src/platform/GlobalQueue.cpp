#include "platform/GlobalQueue.h"

#include "platform/ThreadName.h"

#include <system_error>

namespace vorn {
namespace {

// A job for which no thread could be started is tried again after this time.
constexpr std::chrono::milliseconds kRetryInterval{10};

} // namespace

GlobalQueue &GlobalQueue::instance()
{
    static GlobalQueue queue;
    return queue;
}

GlobalQueue::GlobalQueue() : m_scheduler([this] { runScheduler(); }) {}

bool GlobalQueue::start(Job &job)
{
    const std::lock_guard lock(m_mutex);
    if (m_stopping)
        return false;
    if (!m_idle.empty()) {
        m_idle.back()->job = std::move(job);
        m_idle.back()->jobGiven.notify_one();
        m_idle.pop_back();
        return true;
    }
    auto worker = std::make_unique<Worker>();
    try {
        worker->thread = std::thread([this, self = worker.get()] { work(*self); });
    } catch (const std::system_error &) {
        return false;
    }
    worker->job = std::move(job);
    m_workers.push_back(std::move(worker));
    return true;
}

void GlobalQueue::work(Worker &self)
{
    const ThreadName name("worker");
    std::unique_lock lock(m_mutex);
    for (;;) {
        self.jobGiven.wait(lock, [&] { return m_stopping || self.job; });
        if (!self.job)
            return;
        lock.unlock();
        self.job();
        self.job = nullptr;
        lock.lock();
        m_idle.push_back(&self);
    }
}

bool GlobalQueue::post(Job job)
{
    if (start(job))
        return true;
    const std::lock_guard lock(m_mutex);
    schedule(Clock::now() + kRetryInterval, std::move(job));
    return !m_stopping;
}

GlobalQueue::Ticket GlobalQueue::postAt(Clock::time_point when, Job job)
{
    const std::lock_guard lock(m_mutex);
    return schedule(when, std::move(job));
}

GlobalQueue::Ticket GlobalQueue::schedule(Clock::time_point when, Job job)
{
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
    const ThreadName name("scheduler");
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
        const Ticket ticket = next->first;
        Job job = std::move(next->second);
        m_scheduled.erase(next);
        lock.unlock();
        const bool isStarted = start(job);
        lock.lock();
        if (!isStarted && !m_stopping)
            m_scheduled.emplace(Ticket(Clock::now() + kRetryInterval, ticket.second),
                                std::move(job));
    }
}

void GlobalQueue::shutdown()
{
    std::map<Ticket, Job> dropped;
    std::vector<std::unique_ptr<Worker>> workers;
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        dropped.swap(m_scheduled);
        workers.swap(m_workers);
        for (const auto &worker : workers)
            worker->jobGiven.notify_one();
    }
    m_scheduleChanged.notify_all();
    if (m_scheduler.joinable())
        m_scheduler.join();
    for (const auto &worker : workers)
        worker->thread.join();
}

} // namespace vorn
