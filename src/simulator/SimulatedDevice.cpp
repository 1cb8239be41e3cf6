#include "simulator/SimulatedDevice.h"

#include "simulator/DeviceJournal.h"
#include "simulator/DeviceThread.h"

#include <utility>

namespace vorn {

SimulatedDevice::SimulatedDevice(DeviceOptions options)
    : m_journal(std::make_unique<DeviceJournal>(options.modelCode)),
      m_problem(deviceOptionsProblem(options))
{
    m_thread = std::make_unique<DeviceThread>(std::move(options), *m_journal);
}

SimulatedDevice::~SimulatedDevice() = default;

void SimulatedDevice::setObserver(DeviceObserver observer)
{
    m_journal->setObserver(std::move(observer));
}

bool SimulatedDevice::start(QString *problem)
{
    QString why = m_problem;
    const bool started = why.isEmpty() && m_thread->start(&why);
    if (problem != nullptr)
        *problem = why;
    return started;
}

QString SimulatedDevice::path() const
{
    return m_journal->report().path;
}

QString SimulatedDevice::slavePath() const
{
    return m_journal->report().slavePath;
}

DeviceReport SimulatedDevice::report() const
{
    return m_journal->report();
}

void SimulatedDevice::setFaults(const std::vector<Fault> &faults)
{
    m_thread->setFaults(faults);
}

bool SimulatedDevice::waitForExchanges(int count, std::chrono::milliseconds limit) const
{
    return m_journal->waitFor([=](const DeviceReport &r) { return r.exchanges >= count; }, limit);
}

bool SimulatedDevice::waitForFrame(int k, std::chrono::milliseconds limit) const
{
    return m_journal->waitFor([=](const DeviceReport &r) { return r.downloadFrames >= k; }, limit);
}

bool SimulatedDevice::waitForUpdates(int count, std::chrono::milliseconds limit) const
{
    return m_journal->waitFor([=](const DeviceReport &r) { return r.updates >= count; }, limit);
}

bool SimulatedDevice::waitForPlugged(bool plugged, std::chrono::milliseconds limit) const
{
    return m_journal->waitFor([=](const DeviceReport &r) { return r.plugged == plugged; }, limit);
}

void SimulatedDevice::awaitReader() const
{
    m_thread->awaitReader();
}

void SimulatedDevice::unplug()
{
    m_thread->unplug();
}

bool SimulatedDevice::replug(QString *problem)
{
    return m_thread->replug(problem);
}

} // namespace vorn
