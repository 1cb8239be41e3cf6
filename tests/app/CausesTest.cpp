#include "app/Causes.h"

#include "tests/support/QtPrinting.h"

#include <QFile>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QSet>
#include <QSslError>

#include <gtest/gtest.h>

#include <cerrno>

namespace vorn {
namespace {

using namespace std::chrono_literals;
using Kind = PackageProblemKind;
using Ended = UpdateFailureKind;

Explanation opening(int code, DeviceNodeFacts node = {}, QList<NodeHolder> holders = {},
                    const QStringList &suspects = {})
{
    return explainOpening({"/dev/ttyX", code, std::move(node), std::move(holders), suspects});
}

UpdateResult ended(UpdateFailure failure, UpdateStep step, bool mayBeErased)
{
    UpdateResult result;
    result.failure = std::move(failure);
    result.step = step;
    result.mayBeErased = mayBeErased;
    result.frame = 11;
    result.frames = 40;
    result.waited = 5s;
    return result;
}

struct Row
{
    Explanation found;
    Cause cause;
    QStringList says = {}; // what the text holds of the facts
};

std::vector<Row> rows()
{
    const auto update = [](UpdateFailure failure, UpdateStep step, bool mayBeErased) {
        return explainUpdate(ended(std::move(failure), step, mayBeErased));
    };
    const auto image = [&](const UpdateFailure &failure) {
        return update(failure, UpdateStep::ReadImage, false);
    };
    const auto query = [](Ended kind, int code = 0) {
        return explainVersionQuery(ended({kind, code}, UpdateStep::Connect, false));
    };
    const auto download = [](Kind kind, int code, const QString &text, bool hasNetwork = true) {
        return explainDownload({kind, code, text}, hasNetwork);
    };
    const DeviceNodeFacts forbidden{true, false, "dialout", 0660};
    return {
        {opening(ENOENT), Cause::NodeMissing, {"/dev/ttyX"}},
        {opening(ENODEV), Cause::NodeMissing},
        {opening(ENXIO), Cause::NodeMissing},
        {opening(EACCES, forbidden), Cause::NodeNotPermitted, {"-aG dialout $USER", "log out"}},
        {opening(EACCES, {true, false, "root", 0660}), Cause::NodeNotForGroups, {"0660"}},
        {opening(EACCES, {true, false, "dialout", 0600}), Cause::NodeNotForGroups, {"0600"}},
        {opening(EACCES, {true, true, "dialout", 0660}), Cause::CannotOpen, {"ermission"}},
        {opening(EBUSY, {}, {{"minicom", 42}}), Cause::HeldByProgram, {"minicom", "42"}},
        {opening(EBUSY, {}, {{"ModemManager", 7}}), Cause::HeldByModemManager, {"process 7"}},
        {opening(EBUSY, {}, {{"brltty", 8}}), Cause::HeldByBrltty, {"process 8"}},
        {opening(EBUSY), Cause::HeldByUnknown, {"fuser -v /dev/ttyX"}},
        {opening(EBUSY, {}, {}, {"ModemManager"}), Cause::MayBeHeldByModemManager},
        {opening(EBUSY, {}, {}, {"brltty"}), Cause::MayBeHeldByBrltty},
        {opening(EACCES), Cause::CannotOpen},
        {opening(ENOTTY), Cause::NoTerminal, {"/dev/ttyX"}},
        {opening(EIO), Cause::CannotOpen, {"Input/output error"}},
        {explainVanishing("usbserial-A", 1500ms, false), Cause::VanishedSoon, {"1.5 s"}},
        {explainVanishing("usbserial-A", 1500ms, true), Cause::VanishedToBrltty, {"brltty"}},

        {image({Ended::NoImageChosen}), Cause::NoImageChosen},
        {image({Ended::ImageUnreadable, EACCES, "/x.bin"}),
         Cause::ImageUnreadable,
         {"/x.bin", "Permission denied"}},
        {image({Ended::ImageEmpty, 0, "/x.bin"}), Cause::ImageEmpty, {"/x.bin"}},
        {image({Ended::ImageTooLong, 0, "/x.bin"}), Cause::ImageTooLong},
        {image({Ended::WrongModel, 8, "/x.bin"}), Cause::WrongModel, {"/x.bin", "8"}},
        {image({Ended::NoImageForModel, 8}), Cause::NoFirmwareForModel, {"8"}},
        {update({Ended::Interrupted}, UpdateStep::Connect, false), Cause::InterruptedButIntact},
        {update({Ended::Interrupted}, UpdateStep::Data, true),
         Cause::InterruptedAndErased,
         {"data frame 12 of 40"}},
        {update({Ended::TimedOut}, UpdateStep::Download, false),
         Cause::SilentButIntact,
         {"the download command", "5.0 s", "old firmware"}},
        {update({Ended::TimedOut}, UpdateStep::Erase, true),
         Cause::SilentAndErased,
         {"the erase command", "updated again"}},
        {update({Ended::TimedOut, EIO}, UpdateStep::Connect, false),
         Cause::PortFailedButIntact,
         {"Input/output error", "old firmware"}},
        {update({Ended::TimedOut, EIO}, UpdateStep::Erase, true),
         Cause::PortFailedAndErased,
         {"Input/output error", "updated again"}},
        {update({Ended::Refused}, UpdateStep::Connect, false), Cause::RefusedButIntact},
        {update({Ended::Refused}, UpdateStep::Data, true),
         Cause::RefusedAndErased,
         {"data frame 12 of 40"}},
        {update({Ended::PortClosed}, UpdateStep::Synchronize, false), Cause::GoneButIntact},
        {update({Ended::PortClosed}, UpdateStep::Finish, true),
         Cause::GoneAndErased,
         {"the last frame", "Open"}},
        {update({}, UpdateStep::Finish, true), Cause::None},
        {query(Ended::TimedOut), Cause::QuerySilent, {"the connect command"}},
        {query(Ended::TimedOut, EIO), Cause::PortFailed, {"Input/output error"}},
        {query(Ended::Refused), Cause::QueryRefused},
        {query(Ended::PortClosed), Cause::QueryGone},
        {query(Ended::None), Cause::None},

        {explainNoFirmware("/f", 0, true), Cause::NoFirmware, {"/f"}},
        {explainNoFirmware("/f", ENOENT, false), Cause::NoFirmwareNoServer, {"/f"}},
        {explainNoFirmware("/f", EACCES, true), Cause::FolderUnreadable, {"/f", "Permission"}},

        {download(Kind::NameNotFound, 3, "host"), Cause::NameNotFound, {"host"}},
        {download(Kind::NameNotFound, 3, "host", false), Cause::NoNetwork},
        {download(Kind::Unreachable, 1, "host"), Cause::Unreachable, {"host", "1"}},
        {download(Kind::Unreachable, 1, "host", false), Cause::NoNetwork},
        {download(Kind::Unreachable, QNetworkReply::ProxyNotFoundError, "host"),
         Cause::ProxyFailed},
        {download(Kind::ConnectionLost, 0, "host"), Cause::ConnectionLost},
        {download(Kind::TimedOut, 60, "host"), Cause::ServerSilent, {"60 s"}},
        {download(Kind::TooSlow, 3600, "host"), Cause::TooSlow, {"3600 s"}},
        {download(Kind::Certificate, QSslError::CertificateExpired, "host"),
         Cause::Certificate,
         {"expired"}},
        {download(Kind::Encryption, 6, "host"), Cause::Encryption},
        {download(Kind::InsecureRedirect, 0, "host"), Cause::InsecureRedirect},
        {download(Kind::Protocol, 399, "host"), Cause::BadResponse, {"399"}},
        {download(Kind::HttpStatus, 404, "host"), Cause::HttpStatus, {"404"}},
        {download(Kind::UnusableName, 0, "..\x1b[31m\n\u202e"),
         Cause::UnusableName,
         {"..\uFFFD[31m\uFFFD\uFFFD"}},
        {download(Kind::TooLarge, 0, "a.zip"), Cause::TooLarge, {"a.zip"}},
        {download(Kind::NotAnArchive, 0, "a.zip"), Cause::NotAnArchive, {"a.zip"}},
        {download(Kind::BadEntry, 0, "%2.bin"), Cause::BadEntry, {"%2.bin"}},
        {download(Kind::EntryOutside, 0, "../x"), Cause::EntryOutside, {"../x"}},
        {download(Kind::EntryNameTaken, 0, "x"), Cause::EntryNameTaken},
        {download(Kind::Conflict, 0, "/c/x"), Cause::Conflict, {"/c/x"}},
        {download(Kind::FileSystem, ENOSPC, "/c"), Cause::NoSpace, {"/c"}},
        {download(Kind::FileSystem, EDQUOT, "/c"), Cause::NoSpace},
        {download(Kind::FileSystem, EROFS, "/c"), Cause::NoRights, {"/c"}},
        {download(Kind::FileSystem, EIO, "/c"), Cause::FileSystem, {"Input/output error"}},
        {download(Kind::NoCertificates, 0, "/x.pem"), Cause::NoCertificates, {"/x.pem"}},
        {download(Kind::None, 0, {}), Cause::None},
    };
}

TEST(Causes, EachFactHasItsCauseAndNoOther)
{
    for (const Row &row : rows()) {
        const QString text = row.found.text();
        SCOPED_TRACE(qPrintable(text));
        EXPECT_EQ(row.found.cause, row.cause);
        EXPECT_EQ(text.isEmpty(), row.cause == Cause::None);
        for (const QString &part : row.says)
            EXPECT_TRUE(text.contains(part)) << qPrintable(part);
        if (row.cause != Cause::BadEntry) {
            EXPECT_FALSE(text.contains(QRegularExpression("%\\d"))) << "a place is empty";
        }
    }
}

TEST(Causes, ACureInATerminalNamesNoButton)
{
    const QRegularExpression button("“(Open|Update firmware|Download latest)”|[Cc]hoose");
    for (const CauseRow &row : causeTable())
        EXPECT_TRUE(QString(row.word).isEmpty() ||
                    !explain(row.cause).terminalCure.contains(button))
            << row.cure;
}

TEST(Causes, TheTroubleshootingPageHasEachRowOfTheTable)
{
    QFile page(TROUBLESHOOTING);
    ASSERT_TRUE(page.open(QIODevice::ReadOnly));
    const QStringList lines = QString::fromUtf8(page.readAll()).split('\n');
    const auto shown = [](const char *text) {
        return QString::fromUtf8(text).replace(QRegularExpression("%\\d"), "…");
    };
    QSet<Cause> causes;
    for (const CauseRow &row : causeTable()) {
        causes += row.cause;
        EXPECT_TRUE(lines.contains("| " + shown(row.what) + " | " + shown(row.cure) + " |"))
            << row.what;
    }
    EXPECT_EQ(causes.size(), static_cast<qsizetype>(causeTable().size()));
    EXPECT_EQ(lines.filter(QRegularExpression("^\\| .*[.!:…] \\|")).size(), causes.size());
}

} // namespace
} // namespace vorn
