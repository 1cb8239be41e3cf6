#include "cli/DeviceRuns.h"

#include "platform/NotificationCenter.h"

#include <algorithm>
#include <csignal>

namespace vorn {

DeviceRuns::DeviceRuns(const DeviceTask &task, Output &output, DeviceRunsObserver &observer)
    : m_task(task), m_output(output), m_observer(observer)
{
    NotificationCenter::defaultCenter().addObserver(
        &m_subscription, ORSSerialPortWasDisconnectedNotification, [this](const QVariantMap &info) {
            portsWereDisconnected(
                info.value(ORSDisconnectedSerialPortsKey).value<ORSSerialPortList>());
        });
}

void DeviceRuns::start(const ORSSerialPortPtr &port)
{
    m_runs.push_back(std::make_unique<DeviceRun>(port, m_task, m_output,
                                                 static_cast<DeviceRunObserver &>(*this)));
    m_runs.back()->start();
}

bool DeviceRuns::interruptOn(int signal)
{
    const bool isFirst = signal == SIGINT && !std::exchange(m_wasWarned, true);
    if (m_task.updates && (isFirst || signal == SIGHUP)) {
        m_output.note(tr("The update goes on. Pressing Ctrl-C again would leave the device half "
                         "written."));
        return false;
    }
    m_isInterrupted = true;
    for (const auto &run : m_runs)
        run->interrupt();
    return true;
}

ExitCode DeviceRuns::exitCode() const
{
    if (m_isInterrupted && m_failed > 0)
        return kInterrupted;
    return m_failed > 0 && m_good + m_failed > 1 ? kSeveralWithFailures : m_lastFailure;
}

void DeviceRuns::portsWereDisconnected(const ORSSerialPortList &ports)
{
    for (const auto &run : m_runs)
        for (const ORSSerialPortPtr &port : ports)
            if (port->isEqual(*run->port()))
                run->portWasRemoved();
}

void DeviceRuns::deviceRunDidEnd(const DeviceRun &run, const Outcome &outcome)
{
    Outcome shown = outcome;
    std::erase_if(m_runs, [&](const auto &each) { return each.get() == &run; });
    if (shown.succeeded()) {
        ++m_good;
    } else {
        ++m_failed;
        m_lastFailure = exitCodeOf(shown.why);
    }
    m_observer.deviceWillShow(shown);
    m_output.showResult(shown);
    if (m_runs.empty())
        m_observer.allRunsDidEnd();
}

} // namespace vorn
