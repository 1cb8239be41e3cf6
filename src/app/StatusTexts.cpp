#include "app/StatusTexts.h"

#include <QDebug>
#include <QSslError>

#include <cstring>

namespace vorn::texts {
namespace {

const QString kFailed = QStringLiteral("Prompt:Firmware update failed,please try again");
const QString kNoResponse = QStringLiteral("Prompt:Device does not respond during firmware update");
const QString kEraseFailed =
    QStringLiteral("Prompt:Failed to erase the fixed phone of the device ,please try again");

// In quotes, with control characters escaped: devices, packages and servers choose names.
QString quoted(const QString &name)
{
    QString text;
    QDebug(&text).nospace() << name;
    return text;
}

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

QString reason(const PackageProblem &problem)
{
    switch (problem.kind) {
    case PackageProblemKind::None:
        break;
    case PackageProblemKind::NameNotFound:
        return QStringLiteral("the host name cannot be resolved");
    case PackageProblemKind::Unreachable:
        return QStringLiteral("the server cannot be reached (network error %1)").arg(problem.code);
    case PackageProblemKind::ConnectionLost:
        return QStringLiteral("the connection was lost");
    case PackageProblemKind::TimedOut:
        return QStringLiteral("no response within %1 s").arg(problem.code);
    case PackageProblemKind::Certificate:
        return QSslError(static_cast<QSslError::SslError>(problem.code)).errorString();
    case PackageProblemKind::Encryption:
        return QStringLiteral("the TLS handshake failed");
    case PackageProblemKind::InsecureRedirect:
        return QStringLiteral("the server redirects to an unencrypted address");
    case PackageProblemKind::Protocol:
        return QStringLiteral("invalid response (network error %1)").arg(problem.code);
    case PackageProblemKind::HttpStatus:
        return QStringLiteral("the server responded with HTTP status %1").arg(problem.code);
    case PackageProblemKind::UnusableName:
        return QStringLiteral("unusable package name");
    case PackageProblemKind::TooLarge:
        return QStringLiteral("the package is too large");
    case PackageProblemKind::NotAnArchive:
        return QStringLiteral("the package is not a zip archive");
    case PackageProblemKind::BadArchive:
        return QStringLiteral("the package is damaged");
    case PackageProblemKind::Conflict:
        return QStringLiteral("a file or folder of another program is in the way");
    case PackageProblemKind::FileSystem:
        return QString::fromLocal8Bit(std::strerror(problem.code));
    case PackageProblemKind::NoCertificates:
        return QStringLiteral("no certificate in PEM format");
    }
    return {};
}

// Of a failure at a step of the exchange, the step follows.
QString causeOf(const UpdateFailure &failure)
{
    switch (failure.kind) {
    case UpdateFailureKind::None:
    case UpdateFailureKind::Abandoned:
        break;
    case UpdateFailureKind::NoImageChosen:
        return QStringLiteral("No firmware file is chosen");
    case UpdateFailureKind::ImageUnreadable:
        return QStringLiteral("Cannot read the firmware file %1: %2")
            .arg(quoted(failure.text), QString::fromLocal8Bit(std::strerror(failure.code)));
    case UpdateFailureKind::ImageEmpty:
        return QStringLiteral("The firmware file %1 is empty").arg(quoted(failure.text));
    case UpdateFailureKind::ImageTooLong:
        return QStringLiteral("The firmware file %1 is too large for a device")
            .arg(quoted(failure.text));
    case UpdateFailureKind::Refused:
        return QStringLiteral("The device refused");
    case UpdateFailureKind::TimedOut:
        return QStringLiteral("No answer in time to");
    case UpdateFailureKind::PortClosed:
        return QStringLiteral("The port closed before the answer to");
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

QString description(const UpdateResult &result)
{
    if (result.succeeded())
        return QStringLiteral("The device holds the image");
    if (result.step == UpdateStep::ReadImage)
        return causeOf(result.failure);
    QString line = causeOf(result.failure) + u' ' + nameOf(result.step);
    if (result.step == UpdateStep::Data)
        line += QStringLiteral(" %1 of %2").arg(result.frame + 1).arg(result.frames);
    return line;
}

QString description(const PackageProblem &problem)
{
    if (problem.text.isEmpty())
        return reason(problem);
    return quoted(problem.text) + QStringLiteral(": ") + reason(problem);
}

} // namespace vorn::texts
