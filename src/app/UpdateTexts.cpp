#include "app/UpdateTexts.h"

#include <cstring>

namespace vorn::texts {
namespace {

const QString kFailed = QStringLiteral("Prompt:Firmware update failed,please try again");
const QString kNoResponse = QStringLiteral("Prompt:Device does not respond during firmware update");
const QString kEraseFailed =
    QStringLiteral("Prompt:Failed to erase the fixed phone of the device ,please try again");

bool isUnanswered(const UpdateFailure &failure)
{
    return failure.kind == UpdateFailureKind::TimedOut ||
           failure.kind == UpdateFailureKind::PortClosed;
}

QString nameOf(UpdateStep step)
{
    switch (step) {
    case UpdateStep::Synchronize:
        return QStringLiteral("the sync byte");
    case UpdateStep::Connect:
        return QStringLiteral("the connect command");
    case UpdateStep::QueryVersion:
        return QStringLiteral("the version query");
    case UpdateStep::Download:
        return QStringLiteral("the download command");
    case UpdateStep::Erase:
        return QStringLiteral("the erase");
    case UpdateStep::Release:
        return QStringLiteral("the download header");
    case UpdateStep::Data:
        return QStringLiteral("data frame");
    case UpdateStep::Finish:
        return QStringLiteral("the last frame");
    case UpdateStep::ReadImage:
        break;
    }
    return {};
}

} // namespace

QString ofConnection(Connection state, const QString &portName)
{
    const QString text = QStringLiteral("Prompt:%1 Selected,%2");
    switch (state) {
    case Connection::NotOpened:
        return text.arg(portName, QStringLiteral("not opened"));
    case Connection::Opened:
        return text.arg(portName, QStringLiteral("opened successfully"));
    case Connection::OpenFailed:
        return text.arg(portName, QStringLiteral("failed to open,please try again"));
    case Connection::CloseFailed:
        return text.arg(portName, QStringLiteral("closeing failed"));
    case Connection::Closed:
        break;
    }
    return text.arg(portName, QStringLiteral("close successfully"));
}

QString ofProgress(const UpdateProgress &progress)
{
    if (progress.step != UpdateStep::Data)
        return {};
    return QStringLiteral("Prompt:%1%progress,updating firmware").arg(progress.percent);
}

QStringList ofUpdateEnd(const UpdateResult &result)
{
    if (result.succeeded())
        return {QStringLiteral("Prompt:100% progress,successfully update")};
    if (result.step == UpdateStep::ReadImage)
        return {ofImageFailure(result.failure)};
    if (result.step == UpdateStep::Erase)
        return isUnanswered(result.failure) ? QStringList{kEraseFailed} : QStringList();
    QStringList texts;
    if (isUnanswered(result.failure))
        texts += kFailed;
    if (result.step == UpdateStep::Synchronize)
        texts += kNoResponse;
    if (result.step == UpdateStep::QueryVersion)
        texts += kFailed;
    return texts;
}

QStringList ofVersionQueryEnd(const UpdateResult &result)
{
    return isUnanswered(result.failure) ? QStringList{kFailed} : QStringList();
}

QString ofImageFailure(const UpdateFailure &failure)
{
    return failure.kind == UpdateFailureKind::NoImageChosen ? kNoFirmwareSelected : kFailed;
}

QString logLineOf(const UpdateResult &result)
{
    if (result.succeeded())
        return QStringLiteral("The device holds the image");
    if (result.step == UpdateStep::ReadImage)
        return logLineOf(result.failure);
    QString line = logLineOf(result.failure) + u' ' + nameOf(result.step);
    if (result.step == UpdateStep::Data)
        line += QStringLiteral(" %1 of %2").arg(result.frame + 1).arg(result.frames);
    return line;
}

QString logLineOf(const UpdateFailure &failure)
{
    switch (failure.kind) {
    case UpdateFailureKind::None:
    case UpdateFailureKind::Abandoned:
        break;
    case UpdateFailureKind::NoImageChosen:
        return QStringLiteral("No firmware file is chosen");
    case UpdateFailureKind::ImageUnreadable:
        return QStringLiteral("Cannot read the firmware file %1: %2")
            .arg(failure.text, QString::fromLocal8Bit(std::strerror(failure.code)));
    case UpdateFailureKind::ImageEmpty:
        return QStringLiteral("The firmware file %1 is empty").arg(failure.text);
    case UpdateFailureKind::ImageTooLong:
        return QStringLiteral("The firmware file %1 is too large for a device").arg(failure.text);
    case UpdateFailureKind::Refused:
        return QStringLiteral("The device refused");
    case UpdateFailureKind::TimedOut:
        return QStringLiteral("No answer in time to");
    case UpdateFailureKind::PortClosed:
        return QStringLiteral("The port closed before the answer to");
    }
    return {};
}

} // namespace vorn::texts
