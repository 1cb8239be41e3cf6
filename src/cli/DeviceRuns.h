#pragma once

#include "cli/DeviceRun.h"
#include "serial/ORSSerialPortManager.h"

#include <QCoreApplication>
#include <QObject>

#include <memory>
#include <vector>

namespace vorn {

class DeviceRunsObserver
{
public:
    // One device is done. Adds to the outcome what only the command knows, before it is shown.
    virtual void deviceWillShow(Outcome &outcome) { Q_UNUSED(outcome) }
    // No device is at work any more.
    virtual void allRunsDidEnd() = 0;

protected:
    ~DeviceRunsObserver() = default;
};

// Devices that are worked on side by side, each on its own. Main thread only.
class DeviceRuns final : private DeviceRunObserver
{
    Q_DECLARE_TR_FUNCTIONS(DeviceRuns)
public:
    // Output and observer outlive the object.
    DeviceRuns(const DeviceTask &task, Output &output, DeviceRunsObserver &observer);

    void start(const ORSSerialPortPtr &port);
    // Ends the runs unless the signal lets updates go on, as the first SIGINT and a terminal that
    // closes do. True if they end.
    bool interruptOn(int signal);

    bool isEmpty() const { return m_runs.empty(); }
    int good() const { return m_good; }
    int failed() const { return m_failed; }
    // kDone, the only device's code, or that there were several.
    ExitCode exitCode() const;

private:
    void deviceRunDidEnd(const DeviceRun &run, const Outcome &outcome) override;
    void portsWereDisconnected(const ORSSerialPortList &ports);

    const DeviceTask m_task;
    Output &m_output;
    DeviceRunsObserver &m_observer;
    std::vector<std::unique_ptr<DeviceRun>> m_runs;
    int m_good = 0;
    int m_failed = 0;
    ExitCode m_lastFailure = kDone;
    bool m_wasWarned = false;
    bool m_isInterrupted = false;
    QObject m_subscription;
};

} // namespace vorn
