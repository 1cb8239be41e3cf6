#include "app/StatusTexts.h"

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
        return {(result.failure.kind == UpdateFailureKind::NoImageChosen ? kNoFirmwareSelected
                                                                         : kFailed)};
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

QString ofPackageProgress(qint64 received, qint64 total)
{
    const float percentage = 100.0F * static_cast<float>(received) / static_cast<float>(total);
    const QString figure =
        total > 0 ? QString::asprintf("%.0f", double{percentage}) : QStringLiteral("--");
    return QStringLiteral("Prompt:Progress%1%").arg(figure);
}

} // namespace vorn::texts
