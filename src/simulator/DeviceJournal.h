#pragma once

#include "simulator/AnswerPlan.h"
#include "simulator/BootLoader.h"
#include "simulator/DeviceEvent.h"
#include "simulator/DeviceReport.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>

namespace vorn {

// Keeps the report of a simulated device. The device's thread writes; any thread reads or waits.
// The observer is called by the writing methods, on the device's thread, with no lock held.
class DeviceJournal
{
public:
    using Time = std::chrono::steady_clock::time_point;

    explicit DeviceJournal(int modelCode);

    void setObserver(DeviceObserver observer); // before the device's thread runs

    void plugged(const QString &path, const QString &slavePath);
    // Calls pull(), which removes the link and hangs up. A report waits for it, so whoever has seen
    // the device go finds it gone there.
    template <typename Pull>
    void unplug(Pull pull)
    {
        {
            const std::lock_guard lock(m_mutex);
            pull();
            m_report.plugged = false;
            m_report.inUse = false;
            m_downloading = false;
        }
        m_changed.notify_all();
        tell(DeviceEvent::Kind::Unplugged, 0);
    }
    void used(int opens, bool inUse);
    // begun: when the frame's first byte was read; ended: when its last bit arrived.
    void received(const BootEvent &event, qint64 declaredLength, Time begun, Time ended);
    // Calls write(), which writes the answer and says whether it could, and notes the answer. A
    // report waits for both: whoever has read an answer finds it there.
    template <typename Write>
    void answer(const Answer &answer, Time when, Write write)
    {
        bool written = false;
        {
            const std::lock_guard lock(m_mutex);
            written = write();
            if (written)
                enter(answer, when);
        }
        tellAnswer(answer, written);
    }
    void failed(const QString &error);

    DeviceReport report() const;

    // Waits until condition(report) holds; whether it did within the limit.
    template <typename Condition>
    bool waitFor(Condition condition, std::chrono::milliseconds limit) const
    {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [&] { return condition(m_report); });
    }

private:
    void note(const QString &error); // with the lock held
    void tell(DeviceEvent::Kind kind, int number) const;
    std::chrono::microseconds sinceSync(Time when) const;
    void enter(const Answer &answer, Time when); // with the lock held, as the next one
    void tellAnswer(const Answer &answer, bool written);
    std::optional<DeviceEvent> enter(const BootEvent &event, qint64 declaredLength, Time begun,
                                     Time ended);

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    DeviceReport m_report;
    DeviceObserver m_observer;
    QDateTime m_syncClock;
    Time m_syncTime;
    Time m_lastRelease;
    bool m_downloading = false;
};

} // namespace vorn
