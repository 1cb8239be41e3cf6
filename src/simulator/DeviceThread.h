#pragma once

#include "simulator/AnswerPlan.h"
#include "simulator/BootLoader.h"
#include "simulator/DeviceJournal.h"
#include "simulator/DeviceLink.h"
#include "simulator/LineClock.h"
#include "simulator/PseudoTerminal.h"
#include "simulator/TerminalWatch.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace vorn {

// The thread of a simulated device: waits for bytes, requests and due answers with poll(2), and is
// the only one to touch the terminal. Its end unplugs the device.
class DeviceThread
{
public:
    // The journal must outlive the thread.
    DeviceThread(DeviceOptions options, DeviceJournal &journal);
    ~DeviceThread();
    DeviceThread(const DeviceThread &) = delete;
    DeviceThread &operator=(const DeviceThread &) = delete;

    // Runs the thread and plugs in; once. False, with the reason in *problem, when that fails.
    bool start(QString *problem);

    void setFaults(const std::vector<Fault> &faults);
    // Both return when it is done; unplug() on the device's own thread takes effect as soon as the
    // observer returns.
    void unplug();
    bool replug(QString *problem);
    void awaitReader();

private:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;
    enum class Request { None, Plug, AwaitReader, Unplug, Stop };
    struct Pending
    {
        Answer answer;
        Time due;
    };

    bool request(Request what, QString *problem);
    void wake() const;

    void run();
    bool serveRequest(); // false: to stop
    bool plugIn(QString *problem);
    void pullOut();
    void waitForReader() const;
    void plugInWhenDue(Time now);
    std::optional<Time> nextDeadline() const;
    bool waitAndReceive(); // whether bytes were there
    void takeChanges();
    void receive();
    void take(std::span<const std::uint8_t> bytes, Time now);
    void give(const BootEvent &event, Time begun, Time ended);
    void sendDue(Time now);
    void send(const Pending &pending);

    const DeviceOptions m_options;
    DeviceJournal &m_journal;
    UniqueFd m_wake; // eventfd

    std::mutex m_callers; // one request at a time
    std::mutex m_mutex;   // guards what follows
    std::condition_variable m_served;
    Request m_request = Request::None;
    bool m_requestDone = false;
    QString m_requestProblem;
    AnswerPlan m_plan;

    // Only the device's thread touches these once it runs.
    BootLoader m_loader;
    LineClock m_line;
    std::optional<PseudoTerminal> m_terminal;
    TerminalWatch m_watch;
    std::optional<DeviceLink> m_link;
    std::vector<Pending> m_pending; // in the order of their times
    std::vector<Answer> m_answers;  // kept for its memory
    Time m_frameBegun;
    Time m_lastByte;
    // How late the latest releasing answer left, because this thread woke up late. The frame that
    // it released would have come that much sooner over a real line, so it counts as if it had.
    Clock::duration m_lateness{0};
    std::optional<Time> m_replugAt;
    bool m_unplugAsked = false; // by the observer

    std::atomic<std::thread::id> m_threadId;
    std::thread m_thread;
};

} // namespace vorn
