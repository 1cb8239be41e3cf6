#include "update/UpdateRun.h"

#include "update/BootProtocol.h"
#include "update/Frames.h"

#include <algorithm>

using std::chrono::duration_cast;
using std::chrono::milliseconds;

namespace vorn {
namespace {

class UpdateRun
{
public:
    UpdateRun(DeviceLine &line, const ImageReader &readImage, const BootParameters &parameters,
              UpdateObserver &observer)
        : m_line(line), m_boot(line, parameters), m_readImage(readImage), m_parameters(parameters),
          m_observer(observer)
    {
    }

    UpdateResult run();

private:
    // Each step returns whether the update continues; if not, m_result says why.
    bool handshake();
    bool readImage();
    bool startDownload();
    bool waitForErase();
    bool sendImage();
    bool finish();

    void reach(UpdateStep step, qint64 frame = 0);
    bool send(const QByteArray &frame);
    bool goesOn(UpdateFailureKind failure);
    void showProgress(qint64 frame);
    const DeviceFamily &family() const { return m_parameters.familyOf(m_targetVersion); }

    DeviceLine &m_line;
    BootProtocol m_boot;
    const ImageReader &m_readImage;
    const BootParameters &m_parameters;
    UpdateObserver &m_observer;
    QByteArray m_image;
    qint32 m_targetVersion = -1;
    UpdateProgress m_progress;
    UpdateResult m_result;
    const DeviceLine::Clock::time_point m_began = m_line.now();
    DeviceLine::Clock::time_point m_sendingBegan{};
};

UpdateResult UpdateRun::run()
{
    const bool succeeded =
        handshake() && readImage() && startDownload() && waitForErase() && sendImage() && finish();
    if (m_result.failure.kind == UpdateFailureKind::Abandoned)
        return m_result;
    m_result.waited = m_boot.waited();
    m_result.elapsed = duration_cast<milliseconds>(m_line.now() - m_began);
    if (m_result.step >= UpdateStep::Data)
        m_result.sending = duration_cast<milliseconds>(m_line.now() - m_sendingBegan);
    if (succeeded)
        m_boot.raiseRts();
    m_observer.updateDidEnd(m_result);
    // Without a confirmation of the last frame RTS is low already, but it must be certain that the
    // device is not held in reset.
    if (m_result.step == UpdateStep::Finish && m_result.failure.kind != UpdateFailureKind::Refused)
        m_boot.lowerRtsAfterPulse();
    return m_result;
}

bool UpdateRun::handshake()
{
    reach(UpdateStep::Synchronize);
    if (!goesOn(m_boot.connect()))
        return false;
    reach(UpdateStep::Connect);
    if (!goesOn(m_boot.queryVersion()))
        return false;
    m_targetVersion = m_boot.reportedVersion();
    m_observer.targetVersionDidArrive(m_targetVersion);
    return true;
}

bool UpdateRun::readImage()
{
    reach(UpdateStep::ReadImage);
    FirmwareImage image = m_readImage(m_targetVersion);
    if (image.failure) {
        // The device still has its old firmware: no download command has been sent.
        m_result.failure = image.failure;
        return false;
    }
    m_image = std::move(image.bytes);
    m_result.imageBytes = m_image.size();
    m_result.frames = m_progress.frames = m_image.size() / family().imageBytesPerFrame + 1;
    return true;
}

bool UpdateRun::startDownload()
{
    reach(UpdateStep::QueryVersion);
    if (!send(CmdDownload()))
        return false;
    reach(UpdateStep::Download);
    return send(DownloadHeader(family().loadAddress, static_cast<quint32>(m_image.size())));
}

bool UpdateRun::waitForErase()
{
    m_result.mayBeErased = true;
    m_boot.allowForErasing(true);
    if (m_targetVersion >= m_parameters.firstErasingModel) {
        reach(UpdateStep::Erase);
        if (!goesOn(m_boot.waitForAnswer()))
            return false;
        m_boot.keepSecondAnswer();
    }
    reach(UpdateStep::Release);
    return true;
}

bool UpdateRun::sendImage()
{
    const qsizetype perFrame = family().imageBytesPerFrame;
    const qint64 fullFrames = m_result.frames - 1;
    const QByteArrayView image(m_image);
    for (qint64 i = 0; i < fullFrames; ++i) {
        if (!send(DataFrame(image.sliced(i * perFrame, perFrame))))
            return false;
        if (i == 0)
            m_sendingBegan = m_line.now();
        m_boot.allowForErasing(false);
        m_result.step = UpdateStep::Data;
        m_result.frame = i;
        showProgress(i);
    }
    if (!send(LastDataFrame(image.sliced(fullFrames * perFrame))))
        return false;
    if (fullFrames == 0)
        m_sendingBegan = m_line.now();
    m_boot.allowForErasing(false);
    return true;
}

bool UpdateRun::finish()
{
    reach(UpdateStep::Finish);
    return goesOn(m_boot.waitForAnswer());
}

// From now on the device's answers belong to this step.
void UpdateRun::reach(UpdateStep step, qint64 frame)
{
    m_result.step = m_progress.step = step;
    m_result.frame = m_progress.frame = frame;
    m_progress.limit = m_boot.answerLimit();
    m_observer.updateDidProgress(m_progress);
}

bool UpdateRun::send(const QByteArray &frame)
{
    return goesOn(m_boot.sendCmdOrData(frame, frame.size()));
}

bool UpdateRun::goesOn(UpdateFailureKind failure)
{
    m_result.failure.kind = failure;
    return failure == UpdateFailureKind::None;
}

void UpdateRun::showProgress(qint64 frame)
{
    const float share = static_cast<float>(frame) / static_cast<float>(m_result.frames - 1);
    const int percent = std::min(static_cast<int>(share * 100.0F), 99);
    // Most frames do not change the percentage, and the device should not have to wait for them.
    if (percent == m_progress.percent && m_progress.step == UpdateStep::Data)
        return;
    m_progress.percent = percent;
    reach(UpdateStep::Data, frame);
}

} // namespace

UpdateResult queryTargetVersion(DeviceLine &line, const BootParameters &parameters,
                                UpdateObserver &observer)
{
    const auto began = line.now();
    BootProtocol boot(line, parameters);
    UpdateResult result;
    result.failure.kind = boot.connect();
    if (result.succeeded()) {
        result.step = UpdateStep::Connect;
        result.failure.kind = boot.queryVersion();
    }
    if (result.succeeded()) {
        observer.targetVersionDidArrive(boot.reportedVersion());
        boot.lowerRtsAfterPulse();
    }
    result.waited = boot.waited();
    result.elapsed = duration_cast<milliseconds>(line.now() - began);
    if (result.failure.kind != UpdateFailureKind::Abandoned)
        observer.updateDidEnd(result);
    return result;
}

UpdateResult runUpdate(DeviceLine &line, const ImageReader &readImage,
                       const BootParameters &parameters, UpdateObserver &observer)
{
    return UpdateRun(line, readImage, parameters, observer).run();
}

} // namespace vorn
