#include "cli/DeviceRun.h"

#include "app/ProgressTexts.h"
#include "firmware/FirmwareFolder.h"
#include "firmware/FirmwareModels.h"
#include "platform/Directories.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "update/FirmwareImage.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

namespace vorn {
namespace {

using namespace std::chrono_literals;
using Kind = UpdateFailureKind;

constexpr auto kInterruptLimit = 2s;

// Sets `path` to the file that was read.
FirmwareImage readImage(const DeviceTask &task, qint32 model, QString &path)
{
    path = task.imagePath;
    if (path.isNull()) {
        // A model that takes every file has no newest one: versions of other families do not
        // compare.
        if (isForEveryFile(model))
            return {{}, {Kind::NoImageForModel, model}};
        const QDir folder(QDir(cachesDirectory()).filePath(kFirmwareFolderName));
        const FirmwareScan scan = scanFirmwareFolder();
        if (scan.error != 0)
            return {{}, {Kind::ImageUnreadable, scan.error, folder.path()}};
        const QString name = newestFirmware(firmwareForModel(scan.files, model));
        if (name.isNull())
            return {{}, {Kind::NoImageForModel, model}};
        path = folder.filePath(name);
    } else if (!task.takesAnyModel && isForOtherModel(QFileInfo(path).fileName(), model)) {
        return {{}, {Kind::WrongModel, model, path}};
    }
    return readFirmwareImage(path);
}

} // namespace

DeviceRun::DeviceRun(ORSSerialPortPtr port, const DeviceTask &task, Output &output,
                     DeviceRunObserver &observer)
    : m_task(task), m_output(output), m_observer(observer),
      m_session(std::move(port), *this, task.parameters)
{
    m_outcome.device = m_session.port()->name();
}

void DeviceRun::start()
{
    m_began = Clock::now();
    if (!m_session.open())
        return openingFailed();
    if (!m_session.hasItsSpeed()) {
        m_isIdle = true; // what the query finds out does not matter
        const int code = m_outcome.code = m_session.portError();
        return sequenceDidEnd(code != 0
                                  ? explainOpening(OpeningFacts{port()->path(), code, {}, {}, {}})
                                  : explain(Cause::SpeedNotPossible,
                                            {port()->path(), QString::number(port()->baudRate())}));
    }
    if (m_task.updates)
        startUpdate();
}

void DeviceRun::interrupt()
{
    m_isInterrupted = true;
    m_session.interrupt();
    QTimer::singleShot(kInterruptLimit, m_session.port().get(), [this, token = m_lifetime.token()] {
        if (!token.expired())
            m_session.close();
    });
}

void DeviceRun::portWasRemoved()
{
    m_session.close();
}

void DeviceRun::openingFailed()
{
    m_outcome.code = m_session.portError();
    // Asks the system, which takes a while.
    GlobalQueue::instance().post(
        [this, path = port()->path(), code = m_outcome.code, token = m_lifetime.token()] {
            MainQueue::instance().post(token, [this, why = explainOpening(path, code)] {
                m_isIdle = true;
                sequenceDidEnd(why);
            });
        });
}

void DeviceRun::startUpdate()
{
    m_step.reset();
    m_session.startUpdate([this, task = m_task, token = m_lifetime.token()](qint32 model) {
        QString path;
        FirmwareImage image = readImage(task, model, path);
        QByteArray sha256;
        if (!image.failure)
            sha256 = QCryptographicHash::hash(image.bytes, QCryptographicHash::Sha256).toHex();
        MainQueue::instance().post(token, [this, path, sha256] {
            m_outcome.file = path.isNull() ? path : QFileInfo(path).absoluteFilePath();
            m_outcome.sha256 = sha256;
        });
        return image;
    });
}

void DeviceRun::targetVersionDidArrive(qint32 targetVersion)
{
    m_outcome.model = targetVersion;
    m_output.showModel(m_outcome.device, targetVersion);
}

void DeviceRun::versionQueryDidEnd(const UpdateResult &result)
{
    if (m_hasEnded)
        return;
    m_outcome.text = tr("Model code %1").arg(m_outcome.model);
    m_outcome.code = result.failure.code;
    sequenceDidEnd(m_isInterrupted && !result.succeeded() ? explain(Cause::InterruptedButIntact)
                                                          : explainVersionQuery(result));
}

void DeviceRun::updateDidProgress(const UpdateProgress &progress)
{
    showStep(progress.step);
    if (progress.step == UpdateStep::Data)
        m_output.showProgress(m_outcome.device, progress.percent, progress.frame + 1,
                              progress.frames);
}

void DeviceRun::showStep(UpdateStep step)
{
    if (m_step == step)
        return;
    m_step = step;
    Step shown = stepOf(step);
    shown.attempt = m_retried + 1;
    m_output.showStep(m_outcome.device, shown);
}

void DeviceRun::updateDidEnd(const UpdateResult &result)
{
    UpdateResult ended = result;
    if (m_isInterrupted && !ended.succeeded())
        ended.failure = {Kind::Interrupted};
    const Explanation why = explainUpdate(ended);
    if (mayRetry(ended)) {
        ++m_retried;
        m_output.note(tr("%1: %2 Beginning again with the reset pulse (%3 of %4).")
                          .arg(m_outcome.device, why.what)
                          .arg(m_retried)
                          .arg(m_task.retries));
        startUpdate();
        showStep(UpdateStep::Synchronize);
        return m_output.showProgress(m_outcome.device, 0, 0, 0);
    }
    if (ended.succeeded())
        m_outcome.text = tr("Updated with %1 in %2 s")
                             .arg(QFileInfo(m_outcome.file).fileName(), secondsText(ended.elapsed));
    else
        m_outcome.step = ended.step;
    if (ended.failure.kind == Kind::ImageUnreadable || ended.failure.kind == Kind::PortClosed ||
        ended.failure.kind == Kind::TimedOut)
        m_outcome.code = ended.failure.code;
    sequenceDidEnd(why);
}

bool DeviceRun::mayRetry(const UpdateResult &result) const
{
    const bool isDevices =
        result.failure.kind == Kind::TimedOut || result.failure.kind == Kind::Refused;
    return isDevices && m_session.isOpen() && m_retried < m_task.retries;
}

void DeviceRun::deviceDidBecomeIdle()
{
    m_isIdle = true;
    closeWhenIdle();
}

void DeviceRun::deviceDidClose(bool)
{
    closeWhenIdle();
}

void DeviceRun::deviceDoesNotClose()
{
    m_output.note(explain(Cause::DoesNotClose, {port()->path()}).terminalText());
    // A sequence that still runs ends here; it would wait for the close.
    m_session.end();
    finish();
}

void DeviceRun::sequenceDidEnd(const Explanation &why)
{
    m_outcome.why = why;
    m_hasEnded = true;
    closeWhenIdle();
}

// The pulse that restarts the device is over before its port closes.
void DeviceRun::closeWhenIdle()
{
    if (!m_hasEnded || (!m_isIdle && !m_isInterrupted))
        return;
    if (m_session.isOpen())
        m_session.close();
    else
        finish();
}

void DeviceRun::finish()
{
    if (std::exchange(m_isFinished, true))
        return;
    m_outcome.elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_began);
    MainQueue::instance().post(m_lifetime.token(),
                               [this] { m_observer.deviceRunDidEnd(*this, m_outcome); });
}

} // namespace vorn
