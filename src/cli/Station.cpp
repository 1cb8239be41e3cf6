#include "cli/Station.h"

#include "app/StatusTexts.h"
#include "cli/DeviceChoice.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"

#include <QCoreApplication>

#include <cstring>

namespace vorn {
namespace {

QString recordProblem(const QString &path, int error)
{
    return Station::tr("The record %1 cannot be written: %2.")
        .arg(path, QString::fromLocal8Bit(std::strerror(error)));
}

} // namespace

Station::Station(const CliOptions &options, Output &output)
    : m_options(options), m_output(output), m_runs(taskOf(options), output, *this)
{
}

std::optional<ExitCode> Station::prepare()
{
    const Explanation problem = problemOfImage(m_options);
    if (problem.cause != Cause::None) {
        m_output.showResult({.why = problem});
        return exitCodeOf(problem);
    }
    if (!m_options.recordPath.isNull()) {
        if (const int error = m_record.open(m_options.recordPath); error != 0) {
            m_output.note(recordProblem(m_options.recordPath, error));
            return kUsage;
        }
    }
    return std::nullopt;
}

void Station::start()
{
    NotificationCenter::defaultCenter().addObserver(
        &m_subscription, ORSSerialPortWasConnectedNotification, [this](const QVariantMap &info) {
            take(info.value(ORSConnectedSerialPortsKey).value<ORSSerialPortList>());
        });
    m_output.note(tr("Plug in a device to update it; Ctrl-C ends."));
    take(offeredDevices());
}

void Station::take(const ORSSerialPortList &ports)
{
    for (const ORSSerialPortPtr &port : ports) {
        if (!port->name().startsWith(texts::kDeviceNamePrefix))
            continue;
        // The file may have gone since the last device. In the background, since a network file
        // system may hang, which must not stop other devices' updates.
        GlobalQueue::instance().post([this, port, options = m_options, token = m_lifetime.token()] {
            MainQueue::instance().post(
                token, [this, port, why = problemOfImage(options)] { begin(port, why); });
        });
    }
}

void Station::begin(const ORSSerialPortPtr &port, const Explanation &problem)
{
    if (m_isEnding)
        return;
    if (problem.cause == Cause::None) {
        m_runs.start(port);
    } else {
        ++m_refused;
        m_output.showResult({.device = port->name(), .why = problem});
    }
}

void Station::deviceWillShow(Outcome &outcome)
{
    if (!outcome.succeeded() && !m_isEnding)
        outcome.advice = tr("To try again, unplug it and plug it in again.");
    if (m_options.recordPath.isNull())
        return;
    if (const int error = m_record.append(outcome); error != 0) {
        // A station whose work leaves no record does no more.
        m_output.note(recordProblem(m_options.recordPath, error));
        m_recordFailed = true;
        m_isEnding = true;
    }
}

bool Station::quitSignalDidArrive(int signal)
{
    m_isEnding = true;
    if (!m_runs.isEmpty())
        return m_runs.interruptOn(signal);
    end();
    return true;
}

void Station::allRunsDidEnd()
{
    if (m_isEnding)
        end();
}

void Station::end()
{
    const int failed = m_runs.failed() + m_refused;
    m_output.showSummary(m_runs.good(), failed);
    if (m_recordFailed)
        QCoreApplication::exit(kUsage);
    else if (m_runs.exitCode() == kInterrupted)
        QCoreApplication::exit(kInterrupted);
    else
        QCoreApplication::exit(failed > 0 ? kSeveralWithFailures : kDone);
}

} // namespace vorn
