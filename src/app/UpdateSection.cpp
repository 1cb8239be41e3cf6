#include "app/UpdateSection.h"

#include "app/StatusTexts.h"

#include <QFileInfo>

using namespace std::chrono_literals;
using std::chrono::duration_cast;
using std::chrono::milliseconds;

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kRefresh = 250ms;
constexpr auto kLongRun = 10s; // somebody may have turned to something else meanwhile

} // namespace

UpdateSection::UpdateSection(MainWindow &window, const TaggedControls &controls, LogSection &log,
                             DesktopNotifications &notifications)
    : m_window(window), m_controls(controls), m_log(log), m_notifications(notifications)
{
    m_refresh.setInterval(kRefresh);
    m_refresh.callOnTimeout(this, &UpdateSection::showDetails);
}

void UpdateSection::setDevice(const QString &name)
{
    if (m_device == name)
        return;
    m_device = name;
    m_hasUpdateTranscript = false;
    m_endText.clear();
    m_window.showUpdateDetails({});
}

void UpdateSection::warn(const Explanation &why)
{
    m_log.add(why.text());
    m_window.showUpdateDetails(why.text());
}

void UpdateSection::forgetRefusal()
{
    if (!m_session)
        m_window.showUpdateDetails(m_checkText.isEmpty() ? m_endText : m_checkText);
}

void UpdateSection::showCheck(const QString &text)
{
    m_checkText = text;
    forgetRefusal();
}

// The end of the last update is no longer told, unless it left the device without firmware.
void UpdateSection::supersedeEnd()
{
    m_window.resetUpdateProgress();
    if (!m_unfinished.contains(m_device))
        m_endText.clear();
}

// Leaves the device alone.
void UpdateSection::refuse(const QString &text, const Explanation &why)
{
    m_log.add(tr("Update not started: %1").arg(why.text()));
    showStatus(m_controls.updateText, text, StatusTone::Bad);
    m_checkText.clear();
    m_window.showUpdateDetails(why.text());
    supersedeEnd();
}

void UpdateSection::begin(const DeviceSession &session, const QString &imagePath)
{
    m_session = &session;
    m_percent = 0;
    m_endText.clear();
    m_checkText.clear();
    m_step.reset();
    m_progress.start(Clock::now());
    m_sleepBlock.emplace(tr("A device's firmware is being updated"));
    m_window.resetUpdateProgress();
    m_window.setUpdateRuns(true);
    setStatusTone(m_controls.updateText, StatusTone::Neutral);
    m_log.addStart(
        tr("Update of %1 with %2").arg(session.port()->name(), QFileInfo(imagePath).fileName()));
    m_refresh.start();
    showDetails();
}

void UpdateSection::showProgress(const UpdateProgress &progress)
{
    const auto now = Clock::now();
    m_progress.update(progress, now);
    if (m_step != progress.step) {
        endStep();
        m_step = progress.step;
        m_stepBegan = now;
        m_log.addStart(titleOfStep(progress.step));
    }
    if (progress.step == UpdateStep::Erase)
        m_window.showUpdateBusy();
    if (progress.step != UpdateStep::Data)
        return;
    m_percent = progress.percent;
    m_window.showUpdateProgress(progress.percent);
    showStatus(m_controls.updateText, texts::ofProgress(progress), StatusTone::Neutral);
}

void UpdateSection::end(const UpdateResult &ended)
{
    UpdateResult result = ended;
    const QString device = m_session->port()->name();
    // Nothing that this run found out brings back what an earlier one has erased.
    if (result.succeeded())
        m_unfinished.remove(device);
    else if (result.mayBeErased)
        m_unfinished.insert(device);
    result.mayBeErased = m_unfinished.contains(device);
    m_refresh.stop();
    m_sleepBlock.reset();
    const StatusTone tone = result.succeeded() ? StatusTone::Good : StatusTone::Bad;
    setStatusTone(m_controls.updateText, tone);
    for (const QString &text : texts::ofUpdateEnd(result))
        showStatus(m_controls.updateText, text, tone);
    // Otherwise a failure during the erase leaves the bar indeterminate.
    m_window.showUpdateProgress(result.succeeded() ? 100 : m_percent);
    m_window.setUpdateRuns(false);

    const QString why = explainUpdate(result).text();
    m_endText = result.succeeded() ? textOfUpdateTime(result) : why;
    m_window.showUpdateDetails(m_endText);
    if (result.succeeded()) {
        endStep();
        m_log.addOk(tr("Update"), result.elapsed);
    } else {
        if (m_step != result.step)
            endStep();
        m_log.addFailed(titleOfStep(result.step), result.waited);
        m_log.addFailed(tr("Update"), result.elapsed, why);
        m_step.reset();
    }
    m_log.setTranscript(m_session->transcript());
    m_hasUpdateTranscript = true;
    if (result.elapsed >= kLongRun && !m_window.isActiveWindow())
        announce(result);
    m_session = nullptr;
}

void UpdateSection::queryDidBegin()
{
    m_log.addStart(tr("Version query"));
    forgetRefusal();
}

void UpdateSection::queryDidEnd(const DeviceSession &session, const UpdateResult &result)
{
    if (!m_hasUpdateTranscript)
        m_log.setTranscript(session.transcript());
    for (const QString &text : texts::ofVersionQueryEnd(result))
        showStatus(m_controls.updateText, text, StatusTone::Bad);
    if (result.succeeded()) {
        m_log.addOk(tr("Version query"), result.elapsed);
        return;
    }
    const QString why = explainVersionQuery(result).text();
    m_log.addFailed(tr("Version query"), result.elapsed, why);
    // Details of a failed update stay; a closed port is explained under the connection.
    if (m_unfinished.contains(m_device) || result.failure.kind == UpdateFailureKind::PortClosed)
        return;
    supersedeEnd();
    if (m_checkText.isEmpty())
        m_window.showUpdateDetails(why);
}

void UpdateSection::showDetails()
{
    m_window.showUpdateDetails(m_progress.text(Clock::now(), m_session->lastHeard()));
}

// The awaited step is over.
void UpdateSection::endStep()
{
    if (m_step)
        m_log.addOk(titleOfStep(*m_step), duration_cast<milliseconds>(Clock::now() - m_stepBegan));
    m_step.reset();
}

void UpdateSection::announce(const UpdateResult &result)
{
    const QString device = m_session->port()->name();
    if (result.succeeded())
        m_notifications.deliver(tr("Firmware updated"), tr("%1 has its new firmware.").arg(device));
    else
        m_notifications.deliver(tr("Firmware update failed"),
                                tr("%1: %2").arg(device, explainUpdate(result).text()));
}

} // namespace vorn
