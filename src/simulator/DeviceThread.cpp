#include "simulator/DeviceThread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <system_error>
#include <utility>

namespace vorn {

DeviceThread::DeviceThread(DeviceOptions options, DeviceJournal &journal)
    : m_options(std::move(options)), m_journal(journal),
      m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_plan(m_options),
      m_loader(m_options.flashSize), m_line(m_options.baud)
{
}

DeviceThread::~DeviceThread()
{
    if (m_thread.joinable()) {
        request(Request::Stop, nullptr);
        m_thread.join();
    }
}

bool DeviceThread::start(QString *problem)
{
    if (!m_wake.isValid()) {
        *problem = QStringLiteral("no event descriptor to be had");
        return false;
    }
    m_thread = std::thread([this] { run(); });
    return request(Request::Plug, problem);
}

void DeviceThread::wake() const
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_wake.get(), &one, sizeof one);
}

void DeviceThread::setFaults(const std::vector<Fault> &faults)
{
    const std::lock_guard lock(m_mutex);
    m_plan.setFaults(faults);
}

void DeviceThread::unplug()
{
    if (std::this_thread::get_id() == m_threadId)
        m_unplugAsked = true;
    else
        request(Request::Unplug, nullptr);
}

bool DeviceThread::replug(QString *problem)
{
    return request(Request::Plug, problem);
}

void DeviceThread::awaitReader()
{
    request(Request::AwaitReader, nullptr);
}

bool DeviceThread::request(Request what, QString *problem)
{
    const std::lock_guard caller(m_callers);
    std::unique_lock lock(m_mutex);
    m_request = what;
    m_requestDone = false;
    m_requestProblem = {};
    wake();
    m_served.wait(lock, [this] { return m_requestDone; });
    const bool done = m_requestProblem.isNull();
    if (problem != nullptr)
        *problem = std::move(m_requestProblem);
    return done;
}

bool DeviceThread::serveRequest()
{
    Request what = Request::None;
    {
        const std::lock_guard lock(m_mutex);
        what = std::exchange(m_request, Request::None);
    }
    if (what == Request::None)
        return true;

    QString problem;
    if (what == Request::AwaitReader) {
        waitForReader();
    } else if (what == Request::Plug) {
        m_replugAt.reset();
        if (!m_terminal)
            plugIn(&problem);
    } else {
        m_replugAt.reset();
        pullOut();
    }
    {
        const std::lock_guard lock(m_mutex);
        m_requestDone = true;
        m_requestProblem = std::move(problem);
    }
    m_served.notify_all();
    return what != Request::Stop;
}

bool DeviceThread::plugIn(QString *problem)
{
    std::optional<PseudoTerminal> terminal = PseudoTerminal::open(problem);
    if (!terminal)
        return false;
    // Watched before the link shows it to anyone: no opening is missed.
    TerminalWatch watch(terminal->slavePath());
    QString path = terminal->slavePath();
    if (!m_options.name.isEmpty()) {
        m_link = DeviceLink::create(m_options.directory, m_options.name, path, problem);
        if (!m_link)
            return false;
        path = m_link->path();
    }
    m_watch = std::move(watch);
    m_terminal = std::move(terminal);
    m_journal.plugged(path, m_terminal->slavePath());
    return true;
}

void DeviceThread::pullOut()
{
    m_unplugAsked = false;
    if (!m_terminal)
        return;
    m_pending.clear();
    m_line.dropOutput(Clock::now());
    m_loader.powerOff();
    m_watch = TerminalWatch();
    m_journal.unplug([this] {
        m_link.reset();
        m_terminal.reset();
    });
}

// There is no event for "all was read".
void DeviceThread::waitForReader() const
{
    constexpr int stepMs = 5;
    const Time limit = Clock::now() + std::chrono::seconds(1);
    while (m_terminal && m_terminal->holdsUnread() && Clock::now() < limit)
        ::poll(nullptr, 0, stepMs);
}

void DeviceThread::plugInWhenDue(Time now)
{
    if (!m_replugAt || *m_replugAt > now)
        return;
    m_replugAt.reset();
    QString problem;
    if (!plugIn(&problem))
        m_journal.failed(QStringLiteral("could not be plugged in again: %1").arg(problem));
}

void DeviceThread::run()
{
    // The program's signals are for its main thread, and answers leave on time to the microsecond
    // (by default the kernel may delay a timed wake-up by 50).
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    ::prctl(PR_SET_TIMERSLACK, 1UL);
    m_threadId = std::this_thread::get_id();

    while (serveRequest()) {
        const Time now = Clock::now();
        sendDue(now);
        plugInWhenDue(now);
        const bool received = waitAndReceive();
        // Judged after a look at the terminal: what came while this thread did not run is no
        // silence.
        if (!received && m_loader.insideFrame() &&
            Clock::now() >= m_lastByte + m_options.resyncTime)
            give(m_loader.silence(), m_frameBegun, Clock::now());
    }
}

std::optional<DeviceThread::Time> DeviceThread::nextDeadline() const
{
    std::optional<Time> next = m_replugAt;
    const auto consider = [&](Time time) { next = next ? std::min(*next, time) : time; };
    if (!m_pending.empty())
        consider(m_pending.front().due);
    if (m_loader.insideFrame())
        consider(m_lastByte + m_options.resyncTime);
    return next;
}

bool DeviceThread::waitAndReceive()
{
    // poll(2) leaves out descriptors of -1: an unplugged terminal, a watch that is not to be had.
    std::array<pollfd, 3> fds{{{m_wake.get(), POLLIN, 0},
                               {m_terminal ? m_terminal->master() : -1, POLLIN, 0},
                               {m_watch.descriptor(), POLLIN, 0}}};
    timespec limit{};
    const std::optional<Time> deadline = nextDeadline();
    if (deadline) {
        const auto left = std::max(*deadline - Clock::now(), Clock::duration::zero());
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        limit.tv_sec = seconds.count();
        limit.tv_nsec = std::chrono::nanoseconds(left - seconds).count();
    }
    if (::ppoll(fds.data(), fds.size(), deadline ? &limit : nullptr, nullptr) <= 0)
        return false;
    if (fds[0].revents != 0) {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = ::read(m_wake.get(), &count, sizeof count);
    }
    if (fds[2].revents != 0)
        takeChanges();
    if (fds[1].revents != 0)
        receive();
    return fds[1].revents != 0;
}

void DeviceThread::takeChanges()
{
    const TerminalWatch::Changes changes = m_watch.takeChanges();
    if (changes.handover) {
        m_terminal->discardUnread();
        if (changes.unused)
            m_terminal->endExclusiveUse();
    }
    m_journal.used(changes.opens, !changes.unused);
}

void DeviceThread::receive()
{
    std::array<std::uint8_t, 4096> buffer;
    const ssize_t got = ::read(m_terminal->master(), buffer.data(), buffer.size());
    if (got > 0) {
        take(std::span(buffer).first(static_cast<std::size_t>(got)), Clock::now());
    } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
        const std::error_code error(got == 0 ? 0 : errno, std::generic_category());
        m_journal.failed(QStringLiteral("the terminal is gone: %1")
                             .arg(QString::fromStdString(error.message())));
        pullOut();
    }
}

void DeviceThread::take(std::span<const std::uint8_t> bytes, Time now)
{
    while (!bytes.empty() && m_terminal) {
        if (!m_loader.insideFrame()) {
            m_frameBegun = now;
            if (bytes.front() == boot::Sync)
                m_lateness = {}; // no answer released it
        }
        m_lastByte = now;
        const BootLoader::Taken taken = m_loader.take(bytes);
        bytes = bytes.subspan(taken.count);
        const Time ended = m_line.arrival(now - m_lateness, taken.count);
        if (taken.event)
            give(*taken.event, m_frameBegun, ended);
    }
}

void DeviceThread::give(const BootEvent &event, Time begun, Time ended)
{
    const bool begins =
        event.step == BootStep::Sync && event.verdict == BootEvent::Verdict::Accepted;
    if (begins) {
        // An opening that came before the sync byte discards what an earlier user left unread; it
        // must not discard this exchange's answer.
        takeChanges();
        m_pending.clear();
        m_line.dropOutput(Clock::now());
    }
    m_journal.received(event, m_loader.declaredLength(), begun, ended);
    if (m_unplugAsked) {
        pullOut();
        return;
    }
    m_answers.clear();
    {
        const std::lock_guard lock(m_mutex);
        m_plan.answer(event, m_answers);
    }
    for (const Answer &answer : m_answers)
        m_pending.push_back({answer, m_line.departure(ended + answer.after, answer.length)});
    sendDue(Clock::now());
}

void DeviceThread::sendDue(Time now)
{
    std::size_t sent = 0;
    while (m_terminal && !m_unplugAsked && sent < m_pending.size() && m_pending[sent].due <= now) {
        const Pending pending = m_pending[sent];
        ++sent;
        if (pending.answer.unplugs) {
            pullOut();
            if (m_options.replugAfter)
                m_replugAt = now + *m_options.replugAfter;
            return;
        }
        send(pending);
    }
    m_pending.erase(m_pending.begin(), m_pending.begin() + static_cast<std::ptrdiff_t>(sent));
    if (m_unplugAsked)
        pullOut();
}

void DeviceThread::send(const Pending &pending)
{
    const Answer &answer = pending.answer;
    const Time when = Clock::now();
    // The release counts from before the write: the other side may be quicker than this thread.
    if (answer.releases) {
        m_loader.release();
        m_lateness = when - pending.due;
    }
    m_journal.answer(answer, when, [&] {
        return ::write(m_terminal->master(), answer.bytes.data(), answer.length) ==
               static_cast<ssize_t>(answer.length);
    });
}

} // namespace vorn
