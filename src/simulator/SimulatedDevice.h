#pragma once

#include "platform/WakeEvent.h"
#include "simulator/AnswerPlan.h"
#include "simulator/BootLoader.h"
#include "simulator/DeviceOptions.h"
#include "simulator/DeviceReport.h"
#include "simulator/PseudoTerminal.h"
#include "simulator/Replay.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace vorn {

// A device's boot loader on a pseudo-terminal. It runs on its own thread without an event loop, so
// a busy program does not slow it down. The destructor unplugs it.
//
// Thread-safe once start() has succeeded.
class SimulatedDevice
{
public:
    explicit SimulatedDevice(DeviceOptions options = {});
    ~SimulatedDevice();
    SimulatedDevice(const SimulatedDevice &) = delete;
    SimulatedDevice &operator=(const SimulatedDevice &) = delete;

    // Plugs the device in; call it once. False, with the reason in *problem, when the terminal or
    // its link cannot be made.
    [[nodiscard]] bool start(QString *problem = nullptr);

    QString path() const;      // the link, or the terminal when there is no link
    QString slavePath() const; // the terminal, /dev/pts/N; another one after each replug()

    DeviceReport report() const;
    // Set each time an update has been completed.
    const WakeEvent &updated() const { return m_updated; }
    // Waits until the report counts `count` exchanges; false if the limit passes first.
    bool waitForExchanges(int count, std::chrono::milliseconds limit) const;

    // Replaces the faults and restarts their counts.
    void setFaults(const std::vector<Fault> &faults);
    // Returns when the other side has read all answers, but after ten seconds at the latest.
    // Unplugging loses what is unread.
    void awaitReader() const;
    // Removes the link and hangs up, like pulling the cable, then returns. The boot loader is
    // reset; the report is not.
    void unplug();
    // Plugs in again, with a new terminal under the same link. False, with the reason in *problem,
    // on failure.
    [[nodiscard]] bool replug(QString *problem = nullptr);

private:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;
    struct Pending
    {
        Answer answer;
        Time due;
    };

    void onThread(const std::function<void()> &job);

    // The methods below run on the device's thread, with the mutex held.
    void run();
    void plugIn(QString *problem);
    void pullOut();
    void sendDue();
    void send(const Pending &pending);
    void replugWhenDue();
    std::optional<Time> nextDeadline() const;
    void wait(std::unique_lock<std::mutex> &lock);
    void noteUses();
    bool receive(); // whether there were bytes
    void take(std::span<const std::uint8_t> bytes, Time now);
    void beginExchange();
    void answer(const BootEvent &event, Time ended);
    void replay(std::span<const std::uint8_t> bytes, Time now);
    Time throughLine(Time &idleFrom, Time start, std::size_t count) const;

    const DeviceOptions m_options;
    const std::chrono::nanoseconds m_byteTime; // on the paced line; 0: not paced
    const WakeEvent m_wake;
    const WakeEvent m_updated;
    std::mutex m_callers; // one job at a time

    // Held by the device's thread except while it waits for input.
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed; // a job is done, an exchange has begun
    const std::function<void()> *m_job = nullptr;
    bool m_stopped = false;
    BootLoader m_loader;
    AnswerPlan m_plan;
    std::optional<Replay> m_replay; // used instead of loader and plan
    DeviceJournal m_journal;
    std::optional<PseudoTerminal> m_terminal; // only while plugged in
    std::deque<Pending> m_pending;            // in the order of their times
    std::optional<Time> m_replugAt;
    Time m_inIdle; // when the line to the device becomes idle
    Time m_outIdle;
    Time m_frameBegun;
    Time m_lastByte;
    // How late this thread wrote the latest release. Over a real line the frame that it released
    // would have arrived sooner by as much, and is treated as if it had.
    Clock::duration m_lateness{0};

    std::thread m_thread;
};

} // namespace vorn
