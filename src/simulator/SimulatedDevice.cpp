#include "simulator/SimulatedDevice.h"

#include <poll.h>
#include <sys/prctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <utility>

namespace vorn {

namespace {

using namespace std::chrono_literals;

// An unfinished frame is dropped after this long a silence.
constexpr auto kResyncTime = 200ms;

constexpr auto kLookAgain = 1ms;

// For a reader that has stopped; one that closes the terminal drops what is unread.
constexpr auto kReadLimit = 10s;

constexpr std::int64_t kBitsPerByte = 10; // a start bit, eight data bits, a stop bit

} // namespace

SimulatedDevice::SimulatedDevice(DeviceOptions options)
    : m_options(std::move(options)),
      m_byteTime(m_options.baud > 0 ? kBitsPerByte * std::chrono::nanoseconds(1s) / m_options.baud
                                    : 0ns),
      m_loader(m_options.flashSize), m_plan(m_options)
{
    m_journal.report().modelCode = m_options.modelCode;
    if (!m_options.replay.isEmpty())
        m_replay.emplace(m_options.replay);
}

SimulatedDevice::~SimulatedDevice()
{
    if (!m_thread.joinable())
        return;
    onThread([this] { m_stopped = true; });
    m_thread.join();
}

bool SimulatedDevice::start(QString *problem)
{
    if (m_wake.error() != 0 || m_updated.error() != 0) {
        if (problem != nullptr)
            *problem = QStringLiteral("no event descriptor");
        return false;
    }
    m_thread = std::thread([this] { run(); });
    return replug(problem);
}

QString SimulatedDevice::path() const
{
    return report().path;
}

QString SimulatedDevice::slavePath() const
{
    return report().slavePath;
}

DeviceReport SimulatedDevice::report() const
{
    const std::lock_guard lock(m_mutex);
    DeviceReport copy = m_journal.report();
    if (m_replay)
        copy.replay = m_replay->report();
    // Deep copies, so that threads share memory only under the lock.
    for (QString *text : {&copy.path, &copy.slavePath})
        text->detach();
    for (QByteArray *bytes : {&copy.image, &copy.partialImage})
        bytes->detach();
    for (QString &error : copy.errors)
        error.detach();
    return copy;
}

bool SimulatedDevice::waitForExchanges(int count, std::chrono::milliseconds limit) const
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] { return m_journal.report().exchanges >= count; });
}

void SimulatedDevice::setFaults(const std::vector<Fault> &faults)
{
    const std::lock_guard lock(m_mutex);
    m_plan.setFaults(faults);
}

void SimulatedDevice::awaitReader() const
{
    // There is no event for "everything has been read".
    constexpr std::chrono::milliseconds kStep(5);
    const auto isUnread = [this] {
        const std::lock_guard lock(m_mutex);
        return m_terminal && m_terminal->holdsUnread();
    };
    for (std::chrono::milliseconds waited{}; waited < kReadLimit && isUnread(); waited += kStep)
        std::this_thread::sleep_for(kStep);
}

void SimulatedDevice::unplug()
{
    onThread([this] { pullOut(); });
}

bool SimulatedDevice::replug(QString *problem)
{
    QString why;
    onThread([&] { plugIn(&why); });
    if (problem != nullptr)
        *problem = why;
    return why.isEmpty();
}

void SimulatedDevice::onThread(const std::function<void()> &job)
{
    const std::lock_guard caller(m_callers);
    std::unique_lock lock(m_mutex);
    m_job = &job;
    m_wake.set();
    m_changed.wait(lock, [this] { return m_job == nullptr; });
}

void SimulatedDevice::run()
{
    // The program's signals are for its other threads. Answers have to leave on time to the
    // microsecond, but by default the kernel may delay a timed wake-up by 50 microseconds.
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    ::prctl(PR_SET_TIMERSLACK, 1UL);

    std::unique_lock lock(m_mutex);
    while (!m_stopped) {
        if (const auto *job = std::exchange(m_job, nullptr)) {
            (*job)();
            m_changed.notify_all();
        }
        sendDue();
        replugWhenDue();
        wait(lock);
        // Only after reading the terminal can silence be told: bytes may have arrived while this
        // thread was not scheduled.
        const bool received = receive();
        if (!received && m_loader.isInsideFrame() && Clock::now() >= m_lastByte + kResyncTime)
            answer(m_loader.silence(), Clock::now());
    }
    pullOut();
}

void SimulatedDevice::plugIn(QString *problem)
{
    m_replugAt.reset();
    if (m_terminal)
        return;
    if (!m_terminal.emplace().open(m_options.directory, m_options.name, problem)) {
        m_terminal.reset();
        return;
    }
    DeviceReport &report = m_journal.report();
    report.path = m_terminal->path();
    report.slavePath = m_terminal->slavePath();
    report.plugged = true;
}

void SimulatedDevice::pullOut()
{
    m_replugAt.reset();
    m_pending.clear();
    m_outIdle = std::min(m_outIdle, Clock::now());
    m_loader.powerOff();
    if (m_replay)
        m_replay->rewind();
    m_terminal.reset();
    m_journal.addUnplug();
}

void SimulatedDevice::replugWhenDue()
{
    if (!m_replugAt || *m_replugAt > Clock::now())
        return;
    QString problem;
    plugIn(&problem);
    if (!problem.isEmpty())
        m_journal.addError(QStringLiteral("could not be plugged in again: %1").arg(problem));
}

std::optional<SimulatedDevice::Time> SimulatedDevice::nextDeadline() const
{
    Time next = m_replugAt.value_or(Time::max());
    if (!m_pending.empty())
        next = std::min(next, m_pending.front().due);
    if (m_loader.isInsideFrame())
        next = std::min(next, m_lastByte + kResyncTime);
    return next == Time::max() ? std::nullopt : std::optional(next);
}

void SimulatedDevice::wait(std::unique_lock<std::mutex> &lock)
{
    if (m_stopped)
        return;
    // ppoll(2) leaves out descriptors of -1.
    std::array<pollfd, 3> fds{{{m_wake.descriptor(), POLLIN, 0},
                               {m_terminal ? m_terminal->master() : -1, POLLIN, 0},
                               {m_terminal ? m_terminal->watch() : -1, POLLIN, 0}}};
    timespec limit{};
    const std::optional<Time> deadline = nextDeadline();
    if (deadline) {
        const std::chrono::nanoseconds left =
            std::max<Clock::duration>(*deadline - Clock::now(), 0ns);
        limit.tv_sec = left / 1s;
        limit.tv_nsec = (left % 1s).count();
    }
    lock.unlock();
    ::ppoll(fds.data(), fds.size(), deadline ? &limit : nullptr, nullptr);
    lock.lock();
    if (fds[0].revents != 0)
        m_wake.clear();
    if (fds[2].revents != 0)
        noteUses();
}

void SimulatedDevice::noteUses()
{
    m_journal.report().opens += m_terminal->takeUses();
    m_journal.report().inUse = m_terminal->isInUse();
}

bool SimulatedDevice::receive()
{
    if (!m_terminal)
        return false;
    std::array<std::uint8_t, 4096> buffer;
    const ssize_t got = ::read(m_terminal->master(), buffer.data(), buffer.size());
    if (got > 0) {
        const auto bytes = std::span(buffer).first(static_cast<std::size_t>(got));
        m_replay ? replay(bytes, Clock::now()) : take(bytes, Clock::now());
    } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
        m_journal.addError(QStringLiteral("the terminal hung up"));
        pullOut();
    }
    return got > 0;
}

void SimulatedDevice::take(std::span<const std::uint8_t> bytes, Time now)
{
    while (!bytes.empty() && m_terminal) {
        if (!m_loader.isInsideFrame()) {
            m_frameBegun = now;
            if (bytes.front() == boot::kSync)
                m_lateness = {}; // no answer released it
        }
        m_lastByte = now;
        const BootLoader::Taken taken = m_loader.take(bytes);
        bytes = bytes.subspan(taken.count);
        const Time ended = throughLine(m_inIdle, now - m_lateness, taken.count);
        if (taken.event)
            answer(*taken.event, ended);
    }
    // Not before: a sync byte comes after a reset, which takes back what is not yet answered.
    sendDue();
}

void SimulatedDevice::beginExchange()
{
    // Opening the terminal discards what an earlier user left unread. That is done here, before the
    // first answer of this exchange is written, which must not be discarded.
    noteUses();
    m_pending.clear();
    m_outIdle = std::min(m_outIdle, Clock::now());
}

void SimulatedDevice::answer(const BootEvent &event, Time ended)
{
    const bool begins =
        event.step == BootStep::Sync && event.verdict == BootEvent::Verdict::Accepted;
    if (begins)
        beginExchange();
    m_journal.addEvent(event, m_loader.declaredLength(), m_frameBegun, ended);
    if (begins)
        m_changed.notify_all();
    for (Answer &answer : m_plan.answersTo(event)) {
        const auto length = static_cast<std::size_t>(answer.bytes.size());
        const Time due = throughLine(m_outIdle, ended + answer.after, length);
        m_pending.push_back({std::move(answer), due});
    }
}

void SimulatedDevice::replay(std::span<const std::uint8_t> bytes, Time now)
{
    Replay::Taken taken = m_replay->take({bytes.data(), static_cast<qsizetype>(bytes.size())});
    if (taken.begins) {
        beginExchange();
        ++m_journal.report().exchanges;
        m_changed.notify_all();
    }
    for (Answer &answer : taken.answers) {
        const Time due = now + answer.after;
        m_pending.push_back({std::move(answer), due});
    }
    sendDue();
}

// The time when `count` bytes that start at `start` have passed through one direction of the line.
// Computed from earlier such times instead of the clock, so that late wake-ups do not add up.
SimulatedDevice::Time SimulatedDevice::throughLine(Time &idleFrom, Time start,
                                                   std::size_t count) const
{
    idleFrom = std::max(idleFrom, start) + m_byteTime * static_cast<std::int64_t>(count);
    return idleFrom;
}

void SimulatedDevice::sendDue()
{
    while (!m_pending.empty() && m_pending.front().due <= Clock::now()) {
        // A slow reader must not join what is meant to arrive in pieces. There is no event for "has
        // been read".
        if ((m_replay || !m_options.connectPieces.empty()) && m_terminal->holdsUnread()) {
            m_pending.front().due = Clock::now() + kLookAgain;
            return;
        }
        const Pending pending = std::move(m_pending.front());
        m_pending.pop_front();
        if (m_replay)
            m_replay->answered();
        if (pending.answer.unplugs) {
            pullOut();
            if (m_options.replugAfter)
                m_replugAt = Clock::now() + *m_options.replugAfter;
        } else {
            send(pending);
        }
    }
}

void SimulatedDevice::send(const Pending &pending)
{
    const Answer &answer = pending.answer;
    const Time when = Clock::now();
    if (answer.releases) {
        m_loader.release();
        m_lateness = when - pending.due;
    }
    const auto length = static_cast<std::size_t>(answer.bytes.size());
    if (::write(m_terminal->master(), answer.bytes.constData(), length) != answer.bytes.size()) {
        m_journal.addError(QStringLiteral("an answer was lost: nobody reads the terminal"));
        return;
    }
    m_journal.addAnswer(answer, when);
    if (answer.completes)
        m_updated.set();
}

} // namespace vorn
