#pragma once

#include "simulator/DeviceEvent.h"
#include "simulator/DeviceOptions.h"
#include "simulator/DeviceReport.h"

#include <QString>

#include <chrono>
#include <memory>
#include <vector>

namespace vorn {

class DeviceJournal;
class DeviceThread;

// A device's boot loader behind a pseudo-terminal, with a thread of its own that needs no event
// loop: a busy or blocked program around it never slows it. Destruction unplugs and stops it.
//
// Every method may be called from any thread once start() has returned.
class SimulatedDevice
{
public:
    explicit SimulatedDevice(DeviceOptions options = {});
    ~SimulatedDevice();
    SimulatedDevice(const SimulatedDevice &) = delete;
    SimulatedDevice &operator=(const SimulatedDevice &) = delete;

    // Calls the observer on the device's thread for each event: a frame's before its answer, an
    // update's after it. The observer must be quick and may call report() and unplug(), no wait.
    // Before start() only.
    void setObserver(DeviceObserver observer);

    // Plugs the device in; once. False, with the reason in *problem, when the options make no
    // sense or there is no terminal or no link to be had.
    [[nodiscard]] bool start(QString *problem = nullptr);

    QString path() const;      // the link, or the terminal when there is no link
    QString slavePath() const; // the terminal, /dev/pts/N; another one after each replug

    DeviceReport report() const;
    // Takes the place of the options' faults; counting begins anew.
    void setFaults(const std::vector<Fault> &faults);

    // Each waits for its condition, and says whether it held within the time.
    // Data frames count from 1, the last frame is the last of them; the count begins anew with
    // each download. waitForFrame() is true from the arrival of frame k on, before its answer.
    bool waitForExchanges(int count, std::chrono::milliseconds limit) const;
    bool waitForFrame(int k, std::chrono::milliseconds limit) const;
    bool waitForUpdates(int count, std::chrono::milliseconds limit) const;
    bool waitForPlugged(bool plugged, std::chrono::milliseconds limit) const;

    // Returns when the other side has read what was answered, or did not within a second; what is
    // unread when the device is unplugged is lost.
    void awaitReader() const;
    // Removes the link and hangs up, as pulling the cable does; what the device was told before is
    // forgotten, the report is kept. Returns when it is done (on the device's own thread, in an
    // observer: at once, and it is done before anything else).
    void unplug();
    // Plugs in again, with a new terminal under the same link. False, with the reason in *problem,
    // when there is no terminal or no link to be had.
    [[nodiscard]] bool replug(QString *problem = nullptr);

private:
    std::unique_ptr<DeviceJournal> m_journal;
    std::unique_ptr<DeviceThread> m_thread;
    QString m_problem; // with the options
};

} // namespace vorn
