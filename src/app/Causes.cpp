#include "app/Causes.h"

#include <QCoreApplication>
#include <QLocale>
#include <QNetworkInterface>
#include <QNetworkReply>
#include <QSslError>
#include <QStringList>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace vorn {
namespace {

const QString kModemManager = QStringLiteral("ModemManager");
const QString kBrltty = QStringLiteral("brltty");
constexpr unsigned kGroupMayUse = 0060; // read and write, in a node's mode

QString systemText(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// Devices, packages and servers choose names: nothing in them may steer a terminal or turn a line
// around.
QString printable(QString text)
{
    for (QChar &c : text) {
        switch (c.category()) {
        case QChar::Other_Control:
        case QChar::Other_Format:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            c = QChar::ReplacementCharacter;
            break;
        default:
            break;
        }
    }
    return text;
}

// Puts the texts into the places %1 to %9. Unlike QString::arg(), a row need not use them all, and
// what stands in a place is not searched for places.
QString filled(const char *row, const QStringList &places)
{
    const QString text = QCoreApplication::translate("Causes", row);
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const int place = text[i] == u'%' && i + 1 < text.size() ? text[i + 1].digitValue() : 0;
        if (place >= 1 && place <= places.size()) {
            result += printable(places[place - 1]);
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

Explanation explainFileError(const QString &path, int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return explain(Cause::NoSpace, {path});
    case EACCES:
    case EPERM:
    case EROFS:
        return explain(Cause::NoRights, {path});
    default:
        return explain(Cause::FileSystem, {path, systemText(error)});
    }
}

Explanation explainUnreachable(const PackageProblem &problem, bool hasNetwork)
{
    const bool isProxy = problem.code >= QNetworkReply::ProxyConnectionRefusedError &&
                         problem.code <= QNetworkReply::UnknownProxyError;
    if (isProxy)
        return explain(Cause::ProxyFailed, {problem.text, QString::number(problem.code)});
    if (!hasNetwork)
        return explain(Cause::NoNetwork);
    return explain(Cause::Unreachable, {problem.text, QString::number(problem.code)});
}

} // namespace

QString Explanation::text() const
{
    return cure.isEmpty() ? what : what + u' ' + cure;
}

QString Explanation::terminalText() const
{
    return terminalCure.isEmpty() ? what : what + u' ' + terminalCure;
}

Explanation explain(Cause cause, const QStringList &places)
{
    const auto rows = causeTable();
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const CauseRow &each) { return each.cause == cause; });
    if (row == rows.end())
        return {};
    const char *terminalCure = row->terminalCure ? row->terminalCure : row->cure;
    return {cause, filled(row->what, places), filled(row->cure, places),
            filled(terminalCure, places), row->word};
}

Explanation explainOpening(const QString &path, int code)
{
    OpeningFacts facts{path, code, deviceNodeFacts(path), {}, {}};
    if (code == EBUSY)
        facts.holders = holdersOf(path);
    if (code == EBUSY && facts.holders.isEmpty())
        for (const QString &program : {kModemManager, kBrltty})
            if (isProgramRunning(program))
                facts.suspects += program;
    return explainOpening(facts);
}

Explanation explainOpening(const OpeningFacts &facts)
{
    const QString &path = facts.path;
    switch (facts.code) {
    case ENOENT:
    case ENXIO:
    case ENODEV:
        return explain(Cause::NodeMissing, {path});
    case EACCES:
    case EPERM:
        if (facts.node.isAccessible || !facts.node.exists)
            break;
        if ((facts.node.mode & kGroupMayUse) == kGroupMayUse &&
            facts.node.group != QStringLiteral("root"))
            return explain(Cause::NodeNotPermitted, {path, facts.node.group});
        return explain(Cause::NodeNotForGroups, {path, octal(facts.node.mode)});
    case EBUSY: {
        if (facts.holders.isEmpty() && facts.suspects.contains(kModemManager))
            return explain(Cause::MayBeHeldByModemManager, {path});
        if (facts.holders.isEmpty() && facts.suspects.contains(kBrltty))
            return explain(Cause::MayBeHeldByBrltty, {path});
        if (facts.holders.isEmpty())
            return explain(Cause::HeldByUnknown, {path});
        const NodeHolder &holder = facts.holders.constFirst();
        const QString process = QString::number(holder.pid);
        if (holder.program == kModemManager)
            return explain(Cause::HeldByModemManager, {path, process});
        if (holder.program == kBrltty)
            return explain(Cause::HeldByBrltty, {path, process});
        return explain(Cause::HeldByProgram, {path, holder.program, process});
    }
    case ENOTTY:
    case EISDIR:
        return explain(Cause::NoTerminal, {path});
    default:
        break;
    }
    return explain(Cause::CannotOpen, {path, systemText(facts.code)});
}

Explanation explainPortError(int code)
{
    return explain(Cause::PortFailed, {systemText(code)});
}

Explanation explainVanishing(const QString &name, std::chrono::milliseconds after, bool brlttyRuns)
{
    return explain(brlttyRuns ? Cause::VanishedToBrltty : Cause::VanishedSoon,
                   {name, secondsText(after)});
}

Explanation explainUpdate(const UpdateResult &result)
{
    const QStringList places{nameOfStep(result.step, result.frame, result.frames),
                             secondsText(result.waited), systemText(result.failure.code)};
    const auto either = [&](Cause intact, Cause erased) {
        return explain(result.mayBeErased ? erased : intact, places);
    };
    const UpdateFailure &failure = result.failure;
    switch (failure.kind) {
    case UpdateFailureKind::None:
    case UpdateFailureKind::Abandoned:
        break;
    case UpdateFailureKind::NoImageChosen:
        return explain(Cause::NoImageChosen);
    case UpdateFailureKind::ImageUnreadable:
        return explain(Cause::ImageUnreadable, {failure.text, systemText(failure.code)});
    case UpdateFailureKind::ImageEmpty:
        return explain(Cause::ImageEmpty, {failure.text});
    case UpdateFailureKind::ImageTooLong:
        return explain(Cause::ImageTooLong, {failure.text});
    case UpdateFailureKind::NoImageForModel:
        return explain(Cause::NoFirmwareForModel, {QString::number(failure.code)});
    case UpdateFailureKind::WrongModel:
        return explain(Cause::WrongModel, {failure.text, QString::number(failure.code)});
    case UpdateFailureKind::Interrupted:
        return either(Cause::InterruptedButIntact, Cause::InterruptedAndErased);
    case UpdateFailureKind::Refused:
        return either(Cause::RefusedButIntact, Cause::RefusedAndErased);
    case UpdateFailureKind::TimedOut:
        if (failure.code != 0)
            return either(Cause::PortFailedButIntact, Cause::PortFailedAndErased);
        return either(Cause::SilentButIntact, Cause::SilentAndErased);
    case UpdateFailureKind::PortClosed:
        return either(Cause::GoneButIntact, Cause::GoneAndErased);
    }
    return {};
}

Explanation explainVersionQuery(const UpdateResult &result)
{
    const QStringList places{nameOfStep(result.step), secondsText(result.waited)};
    switch (result.failure.kind) {
    case UpdateFailureKind::Refused:
        return explain(Cause::QueryRefused, places);
    case UpdateFailureKind::TimedOut:
        return result.failure.code != 0 ? explainPortError(result.failure.code)
                                        : explain(Cause::QuerySilent, places);
    case UpdateFailureKind::PortClosed:
        return explain(Cause::QueryGone, places);
    default:
        return {};
    }
}

Explanation explainNoFirmware(const QString &folder, int error, bool hasPackageServer)
{
    if (error != 0 && error != ENOENT)
        return explain(Cause::FolderUnreadable, {folder, systemText(error)});
    return explain(hasPackageServer ? Cause::NoFirmware : Cause::NoFirmwareNoServer, {folder});
}

Explanation explainDownload(const PackageProblem &problem, bool hasNetwork)
{
    const QString &subject = problem.text;
    const QStringList places{subject, QString::number(problem.code)};
    switch (problem.kind) {
    case PackageProblemKind::None:
        break;
    case PackageProblemKind::NameNotFound:
        return hasNetwork ? explain(Cause::NameNotFound, places) : explain(Cause::NoNetwork);
    case PackageProblemKind::Unreachable:
        return explainUnreachable(problem, hasNetwork);
    case PackageProblemKind::ConnectionLost:
        return explain(Cause::ConnectionLost, places);
    case PackageProblemKind::TimedOut:
        return explain(Cause::ServerSilent, places);
    case PackageProblemKind::TooSlow:
        return explain(Cause::TooSlow, places);
    case PackageProblemKind::Certificate:
        return explain(
            Cause::Certificate,
            {subject, QSslError(static_cast<QSslError::SslError>(problem.code)).errorString()});
    case PackageProblemKind::Encryption:
        return explain(Cause::Encryption, places);
    case PackageProblemKind::InsecureRedirect:
        return explain(Cause::InsecureRedirect, places);
    case PackageProblemKind::Protocol:
        return explain(Cause::BadResponse, places);
    case PackageProblemKind::HttpStatus:
        return explain(Cause::HttpStatus, places);
    case PackageProblemKind::UnusableName:
        return explain(Cause::UnusableName, places);
    case PackageProblemKind::TooLarge:
        return explain(Cause::TooLarge, places);
    case PackageProblemKind::NotAnArchive:
        return explain(Cause::NotAnArchive, places);
    case PackageProblemKind::BadEntry:
        return explain(Cause::BadEntry, places);
    case PackageProblemKind::EntryOutside:
        return explain(Cause::EntryOutside, places);
    case PackageProblemKind::EntryNameTaken:
        return explain(Cause::EntryNameTaken, places);
    case PackageProblemKind::Conflict:
        return explain(Cause::Conflict, places);
    case PackageProblemKind::FileSystem:
        return explainFileError(subject, problem.code);
    case PackageProblemKind::NoCertificates:
        return explain(Cause::NoCertificates, places);
    }
    return {};
}

bool hasNetwork()
{
    const auto interfaces = QNetworkInterface::allInterfaces();
    return std::any_of(interfaces.begin(), interfaces.end(), [](const QNetworkInterface &each) {
        return each.flags().testFlag(QNetworkInterface::IsRunning) &&
               !each.flags().testFlag(QNetworkInterface::IsLoopBack) &&
               !each.addressEntries().isEmpty();
    });
}

QString nameOfStep(UpdateStep step, qint64 frame, qint64 frames)
{
    switch (step) {
    case UpdateStep::Synchronize:
        return QCoreApplication::translate("Steps", "the sync byte");
    case UpdateStep::Connect:
        return QCoreApplication::translate("Steps", "the connect command");
    case UpdateStep::QueryVersion:
        return QCoreApplication::translate("Steps", "the version query");
    case UpdateStep::Download:
        return QCoreApplication::translate("Steps", "the download command");
    case UpdateStep::Erase:
        return QCoreApplication::translate("Steps", "the erase command");
    case UpdateStep::Release:
        return QCoreApplication::translate("Steps", "the download header");
    case UpdateStep::Data:
        return QCoreApplication::translate("Steps", "data frame %1 of %2")
            .arg(frame + 1)
            .arg(frames);
    case UpdateStep::Finish:
        return QCoreApplication::translate("Steps", "the last frame");
    case UpdateStep::ReadImage:
        break;
    }
    return {};
}

QString octal(unsigned mode)
{
    return QStringLiteral("%1").arg(mode, 4, 8, QLatin1Char('0'));
}

QString secondsText(std::chrono::milliseconds time)
{
    const double seconds = std::chrono::duration<double>(time).count();
    return QLocale().toString(seconds, 'f', seconds < 10 ? 1 : 0);
}

} // namespace vorn
