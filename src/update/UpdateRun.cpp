#include "update/UpdateRun.h"

#include "update/FirmwareImage.h"
#include "update/Frames.h"
#include "update/UpdateTexts.h"

#include <QLoggingCategory>

namespace vorn {
namespace {

Q_LOGGING_CATEGORY(logUpdate, "vorn.update")

// Devices of this model code and above erase their flash after the header and say when they are
// done.
constexpr qint32 kFirstErasingModel = 2;

QString nameOf(UpdateStep step)
{
    switch (step) {
    case UpdateStep::Connect:
        return QStringLiteral("connecting");
    case UpdateStep::QueryVersion:
        return QStringLiteral("asking for the version");
    case UpdateStep::ReadImage:
        return QStringLiteral("reading the firmware file");
    case UpdateStep::Download:
        return QStringLiteral("starting the download");
    case UpdateStep::Header:
        return QStringLiteral("announcing the image");
    case UpdateStep::Erase:
        return QStringLiteral("erasing");
    case UpdateStep::Data:
        return QStringLiteral("sending the image");
    case UpdateStep::LastData:
        return QStringLiteral("sending the end of the image");
    case UpdateStep::Finish:
        break;
    }
    return QStringLiteral("waiting for the final answer");
}

} // namespace

UpdateRun::UpdateRun(BootLoaderLink link, QString imagePath,
                     std::shared_ptr<std::atomic<qint32>> targetVersion)
    : m_link(std::move(link)), m_imagePath(std::move(imagePath)),
      m_targetVersion(std::move(targetVersion))
{
}

UpdateResult UpdateRun::run()
{
    if (handshake() && readImage() && startDownload() && waitForErase() && sendData() &&
        sendLastData() && finish())
        qCInfo(logUpdate, "The device holds the image of %lld bytes", m_image.size());
    else
        qCWarning(logUpdate).noquote() << m_result.description;
    return m_result;
}

bool UpdateRun::handshake()
{
    if (!m_link.connect()) {
        failAt(UpdateStep::Connect);
        m_result.texts += texts::kDeviceDoesNotRespond;
        return false;
    }
    if (!m_link.queryVersion())
        return failAt(UpdateStep::QueryVersion);
    if (const auto version = m_link.reportedVersion())
        *m_targetVersion = *version;
    return true;
}

bool UpdateRun::readImage()
{
    m_result.step = UpdateStep::ReadImage;
    if (m_imagePath.isNull()) {
        m_result.texts = {texts::kNoFirmwareSelected};
        m_result.outcome = UpdateResult::Outcome::NoFirmwareChosen;
        m_result.description = QStringLiteral("No firmware file is chosen");
        return false;
    }
    auto image = readFirmwareImage(m_imagePath);
    if (const auto *error = std::get_if<ImageError>(&image)) {
        // Before the download command: the device has not given up its old firmware yet.
        m_result.texts = {texts::kUpdateFailed};
        m_result.outcome = UpdateResult::Outcome::ImageUnusable;
        m_result.description = error->description();
        return false;
    }
    m_image = std::get<QByteArray>(std::move(image));
    m_fullFrames = m_image.size() / kDataFrameBytes;
    return true;
}

bool UpdateRun::startDownload()
{
    if (!send(CmdDownload(), UpdateStep::Download)) {
        m_result.texts += texts::kUpdateFailed;
        return false;
    }
    return send(DownloadHeader(static_cast<quint32>(m_image.size())), UpdateStep::Header);
}

bool UpdateRun::waitForErase()
{
    m_link.allowForErasing(true);
    if (*m_targetVersion < kFirstErasingModel)
        return true;
    m_link.tell([](UpdateObserver &observer) { observer.updateIsErasing(); });
    if (m_link.waitForAnswer() == Verdict::Ack) {
        m_link.keepSecondAnswer();
        return true;
    }
    failAt(UpdateStep::Erase);
    if (m_link.gotNoAnswer())
        m_result.texts = {texts::kEraseFailed};
    return false;
}

bool UpdateRun::sendData()
{
    for (qint64 i = 0; i < m_fullFrames; ++i) {
        const QByteArrayView bytes =
            QByteArrayView(m_image).sliced(i * kDataFrameBytes, kDataFrameBytes);
        if (!send(DataFrame(bytes), UpdateStep::Data, i))
            return false;
        m_link.allowForErasing(false);
        showProgress(i);
    }
    return true;
}

bool UpdateRun::sendLastData()
{
    const QByteArrayView rest = QByteArrayView(m_image).sliced(m_fullFrames * kDataFrameBytes);
    if (!send(LastDataFrame(rest), UpdateStep::LastData, m_fullFrames))
        return false;
    m_link.allowForErasing(false);
    return true;
}

bool UpdateRun::finish()
{
    const Verdict verdict = m_link.waitForAnswer();
    m_result.lowersRts = verdict == Verdict::Ack || m_link.gotNoAnswer();
    if (verdict != Verdict::Ack)
        return failAt(UpdateStep::Finish);
    m_link.raiseRts();
    m_result.texts = {texts::kUpdated};
    return true;
}

bool UpdateRun::send(const QByteArray &frame, UpdateStep step, qint64 index)
{
    return m_link.sendCmdOrData(frame, frame.size()) || failAt(step, index);
}

bool UpdateRun::failAt(UpdateStep step, qint64 frame)
{
    using Outcome = UpdateResult::Outcome;
    m_result.step = step;
    m_result.frame = frame;
    m_result.texts = m_link.noAnswerTexts();
    QString cause;
    if (m_link.lastVerdict() == Verdict::Nak) {
        m_result.outcome = Outcome::Refused;
        cause = QStringLiteral("The device refused");
    } else if (m_link.lastVerdict() == Verdict::LinkLost) {
        m_result.outcome = Outcome::PortClosed;
        cause = QStringLiteral("The connection to the device was closed");
    } else {
        m_result.outcome = Outcome::TimedOut;
        cause = QStringLiteral("The device did not answer in time");
    }
    m_result.description = cause + QStringLiteral(" while ") + nameOf(step);
    if (frame >= 0) {
        m_result.description +=
            QStringLiteral(", at frame %1 of %2").arg(frame + 1).arg(m_fullFrames + 1);
    }
    return false;
}

void UpdateRun::showProgress(qint64 frame)
{
    const float share = static_cast<float>(frame) / static_cast<float>(m_fullFrames);
    const int percent = std::min(static_cast<int>(share * 100.0F), 99);
    // Most frames leave the text as it is, and the device need not wait for that.
    if (percent == m_shownPercent)
        return;
    m_shownPercent = percent;
    m_link.tell([percent](UpdateObserver &observer) {
        observer.updateDidProgress(percent);
        observer.showUpdateText(texts::kUpdating.arg(percent));
    });
}

} // namespace vorn
