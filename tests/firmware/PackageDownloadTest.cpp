#include "firmware/PackageDownload.h"

#include "platform/Directories.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"
#include "simulator/PackageServer.h"
#include "tests/support/Eventually.h"
#include "tests/support/QtPrinting.h"
#include "tests/ziparchive/Tree.h"

#include <gmock/gmock.h>

#include <tuple>

using namespace vorn;
using namespace std::chrono_literals;
using Kind = PackageProblem::Kind;
using Outcome = PackageObserver::Outcome;
using Phase = PackageObserver::Phase;

namespace {

const QString kUpToDate = "Prompt:Currently it is the latest firmware,no need to download";
const QString kFailed = "Prompt:Failed to download the latest firmware";
const QString kSucceeded = "Prompt:Successfully downloaded the latest firmware";
const QString kWhole = "Prompt:Progress100%";
const QString kArchive = "VornUpdate2.zip";
const QByteArray kDate = "Tue, 01 Apr 2025 10:00:00 GMT";
const Tree kOld = {{"VornUpdate2/VORN_I-old.bin", "old"}};
const Tree kNew = {{"VornUpdate2/VORN_I-new.bin", "new"}};

QByteArray newPackage()
{
    static const QByteArray archive =
        makeArchive({{"VornUpdate2/", {}}, {"VornUpdate2/VORN_I-new.bin", "new"}});
    return archive;
}

PackageAnswer answerWith(const QByteArray &package = newPackage())
{
    PackageAnswer answer;
    answer.package = package;
    answer.lastModified = kDate;
    return answer;
}

// The new package with one option of its answer that is not the usual one.
template <typename Value>
PackageAnswer with(Value PackageAnswer::*option, std::type_identity_t<Value> value)
{
    PackageAnswer answer = answerWith();
    answer.*option = std::move(value);
    return answer;
}

// Keeps what it is told; of progress texts in a row the last one.
class Recorder : public PackageObserver
{
public:
    void showText(const QString &text) override
    {
        const QString progress = "Prompt:Progress";
        if (!texts.isEmpty() && text.startsWith(progress) && texts.back().startsWith(progress))
            texts.removeLast();
        texts.append(text);
    }
    void packageProgress(Phase phase, qint64 received, qint64 total) override
    {
        phases.append(phase);
        if (phase == Phase::Receiving)
            bytes = {received, total};
    }
    void packageEnded(Outcome outcome, const PackageProblem &problem) override
    {
        ends.append(qMakePair(outcome, problem));
    }

    QStringList texts;
    QList<Phase> phases;
    QList<QPair<Outcome, PackageProblem>> ends;
    QPair<qint64, qint64> bytes = {0, -1}; // received, of how many
};

class PackageDownloadTest : public testing::Test
{
protected:
    PackageDownloadTest() { MainQueue::instance(); }

    // A fresh program: what is in the caches directory, and the date stored by an earlier one.
    void begin(const Tree &before, const QString &storedDate)
    {
        download.reset();
        recorder = {};
        refills.clear();
        writeTree(cachesDirectory(), before);
        UserDefaults::setStringForKey(storedDate, PackageDownload::KEY_LAST_MODIFIED);
        library = std::make_unique<FirmwareLibrary>([this](qint32 code, const QStringList &titles) {
            refills.append({code, titles});
        });
        library->readFirmWare(-1);
    }

    // A fresh program with older firmware, and a server that answers so.
    void serve(const PackageAnswer &answer, CertificateKind certificate = CertificateKind::Good)
    {
        begin(kOld, "before");
        server = std::make_unique<PackageServer>(answer, certificate);
        QString problem;
        ASSERT_TRUE(server->start(&problem)) << qPrintable(problem);
        location = PackageLocation::onHost(server->host()).value();
        ASSERT_TRUE(location.addCertificates(server->authorityFile(), problem));
    }

    // The download button is pressed.
    void press()
    {
        if (!download)
            download = std::make_unique<PackageDownload>(
                location, *library, [] { return 2; }, recorder, limits);
        download->sendRequest();
    }

    void pressAndWait()
    {
        const qsizetype ends = recorder.ends.size() + 1;
        press();
        ASSERT_TRUE(eventually([&] { return recorder.ends.size() == ends; }));
        EXPECT_FALSE(download->isRunning());
        MainQueue::instance().drain();
    }

    void expectEnd(Outcome outcome, Kind problem = Kind::None)
    {
        ASSERT_FALSE(recorder.ends.isEmpty());
        const auto &[how, why] = recorder.ends.back();
        EXPECT_EQ(how, outcome);
        EXPECT_EQ(why.kind, problem) << qPrintable(why.text);
        EXPECT_EQ(why.text.isEmpty(), problem == Kind::None);
    }

    // Nothing but an answer that was received whole is saved, and nothing else changes.
    void pressAndFail(Kind problem)
    {
        pressAndWait();
        expectEnd(Outcome::Failed, problem);
        const bool isWhole = problem == Kind::HttpStatus || problem == Kind::NotAnArchive;
        EXPECT_EQ(treeAt(cachesDirectory()).contains(kArchive), isWhole);
        EXPECT_EQ(tree(), kOld);
        EXPECT_EQ(storedDate(), "before");
    }

    static QString storedDate()
    {
        return UserDefaults::stringForKey(PackageDownload::KEY_LAST_MODIFIED);
    }
    // What is in the caches directory but for the archive, which may be an error page.
    static Tree tree() { return treeAt(cachesDirectory(), kArchive); }

    std::unique_ptr<PackageServer> server;
    PackageLocation location;
    PackageDownload::Limits limits{.delayBeforeUnpacking = 20ms};
    Recorder recorder;
    QList<QPair<qint32, QStringList>> refills;
    std::unique_ptr<FirmwareLibrary> library;
    std::unique_ptr<PackageDownload> download;
};

TEST_F(PackageDownloadTest, ANewPackageIsInstalledAndItsDateRemembered)
{
    struct Case
    {
        const char *what;
        Tree before;
        QString stored;
        PackageAnswer answer = answerWith();
    };
    const Case cases[] = {
        {"first of all", {}, {}},
        {"newer", kOld, "Mon, 01 Jan 2024 10:00:00 GMT"},
        {"known, but the folder is gone", {}, kDate},
        {"without a date", kOld, kDate, with(&PackageAnswer::lastModified, std::nullopt)},
        {"in chunks", kOld, {}, with(&PackageAnswer::framing, BodyFraming::Chunked)},
        {"to the end", kOld, {}, with(&PackageAnswer::framing, BodyFraming::UntilClose)},
        {"redirected over HTTPS", kOld, {}, with(&PackageAnswer::redirectTo, "https")},
    };
    for (const auto &[what, before, stored, answer] : cases) {
        SCOPED_TRACE(what);
        const bool isCounted = answer.framing == BodyFraming::Length;
        serve(answer);
        begin(before, stored);
        pressAndWait();
        EXPECT_EQ(recorder.texts,
                  QStringList({"0", isCounted ? kWhole : "Prompt:Progress--%", kSucceeded}));
        expectEnd(Outcome::Installed);
        EXPECT_EQ(recorder.phases.front(), Phase::Connecting);
        EXPECT_EQ(recorder.phases.back(), Phase::Unpacking);
        const qint64 size = newPackage().size();
        EXPECT_EQ(recorder.bytes, qMakePair(size, isCounted ? size : 0));
        EXPECT_EQ(tree(), kNew);
        EXPECT_EQ(treeAt(cachesDirectory())[kArchive], newPackage());
        EXPECT_EQ(storedDate(), QString(answer.lastModified.value_or(QByteArray())));
        EXPECT_EQ(storedDate().isNull(), !answer.lastModified.has_value());
        EXPECT_EQ(refills.back(), qMakePair(2, QStringList("VORN_I-new.bin")));
    }
}

TEST_F(PackageDownloadTest, APackageThatIsInstalledAlreadyIsNotReadAgain)
{
    serve(with(&PackageAnswer::bodyPause, 60s));
    begin(kOld, kDate);
    pressAndWait();
    EXPECT_EQ(recorder.texts, QStringList({"0", kUpToDate}));
    expectEnd(Outcome::UpToDate);
    EXPECT_EQ(download->state().mIsCancel, 1);
    EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    ASSERT_TRUE(eventually([&] { return server->report().endedRequests() == 1; }));
    EXPECT_EQ(server->report().requests.front().bodyBytes, 0);

    // A failure without a response then still finds the date that it has: nothing to say.
    server.reset();
    pressAndWait();
    EXPECT_EQ(recorder.texts, QStringList({"0", kUpToDate}));
    expectEnd(Outcome::Failed, Kind::Unreachable);
}

TEST_F(PackageDownloadTest, AnAnswerThatIsNoPackageIsSavedAndFails)
{
    const QStringList texts = {"0", kWhole, kFailed};
    for (const int status : {401, 404, 500, 503}) {
        SCOPED_TRACE(status);
        serve(with(&PackageAnswer::status, status));
        pressAndFail(Kind::HttpStatus);
        EXPECT_EQ(recorder.texts, texts);
        EXPECT_EQ(recorder.ends.back().second.code, status);
    }
    serve(answerWith("no archive"));
    pressAndFail(Kind::NotAnArchive);
    EXPECT_EQ(recorder.texts, texts);
}

TEST_F(PackageDownloadTest, ABodyThatBreaksOffChangesNothingAndShowsNoNewText)
{
    const PackageAnswer truncated = with(&PackageAnswer::truncateAt, newPackage().size() / 2);
    const PackageAnswer cut = with(&PackageAnswer::cutAt, newPackage().size() / 2);
    PackageAnswer cutChunks = cut;
    cutChunks.framing = BodyFraming::Chunked;
    for (const PackageAnswer &answer : {truncated, cut, cutChunks}) {
        serve(answer);
        pressAndFail(Kind::ConnectionLost);
        EXPECT_EQ(recorder.texts.first(), "0");
        EXPECT_FALSE(recorder.texts.contains(kFailed) || recorder.texts.contains(kSucceeded));
    }
    // The flag of the accepted download stays: a failure without a response shows nothing either.
    server.reset();
    const QStringList before = recorder.texts;
    pressAndFail(Kind::Unreachable);
    EXPECT_EQ(recorder.texts, before);
    EXPECT_EQ(download->state().mIsCancel, 0);
}

TEST_F(PackageDownloadTest, ATransferThatStandsStillIsGivenUpAndASlowOneIsNot)
{
    limits.transferTimeout = 300ms;
    for (const PackageAnswer &answer : {with(&PackageAnswer::bodyPause, 60s),
                                        with(&PackageAnswer::silence, ServerSilence::Request),
                                        with(&PackageAnswer::silence, ServerSilence::Handshake)}) {
        serve(answer);
        pressAndFail(Kind::TimedOut);
    }

    limits.transferTimeout = 2s;
    serve(with(&PackageAnswer::bytesPerSecond, newPackage().size() / 4));
    pressAndWait();
    expectEnd(Outcome::Installed);
}

TEST_F(PackageDownloadTest, OnlyATrustedServerOverHttpsIsListenedTo)
{
    const auto pressInVain = [&](Kind problem) {
        SCOPED_TRACE(static_cast<int>(problem));
        pressAndFail(problem);
        EXPECT_EQ(recorder.texts, QStringList(kFailed));
        EXPECT_EQ(server ? server->report().plainConnections : 0, 0);
    };
    for (const CertificateKind certificate :
         {CertificateKind::WrongName, CertificateKind::OtherAuthority, CertificateKind::Expired}) {
        SCOPED_TRACE(static_cast<int>(certificate));
        serve(answerWith(), certificate);
        pressInVain(Kind::Certificate);
    }
    serve(answerWith());
    location = PackageLocation::onHost(server->host()).value(); // no trust in its authority
    pressInVain(Kind::Certificate);
    serve(with(&PackageAnswer::redirectTo, "http"));
    pressInVain(Kind::InsecureRedirect);
    serve(with(&PackageAnswer::redirectTo, "loop"));
    pressInVain(Kind::Protocol);
    serve(answerWith());
    server.reset();
    pressInVain(Kind::Unreachable);
    serve(answerWith());
    location = {};
    pressInVain(Kind::NotConfigured);
}

TEST_F(PackageDownloadTest, TheServerNamesTheArchiveAndItsFolder)
{
    for (const auto &[name, archive, folder] :
         {std::tuple("other.zip", "other.zip", QString("other")),
          {"../../a.b.zip", "a.b.zip", "a"}}) {
        SCOPED_TRACE(name);
        PackageAnswer answer =
            answerWith(makeArchive({{folder + '/', {}}, {folder + "/new.bin", "new"}}));
        answer.suggestedName = name;
        serve(answer);
        pressAndWait();
        expectEnd(Outcome::Installed);
        Tree expected = kOld;
        expected[folder + "/new.bin"] = "new";
        expected[archive] = answer.package;
        EXPECT_EQ(treeAt(cachesDirectory()), expected);
        EXPECT_EQ(download->curDirName(), folder);
    }
    for (const char *name : {".zip", ".."}) {
        SCOPED_TRACE(name);
        serve(with(&PackageAnswer::suggestedName, name));
        pressAndFail(Kind::UnusableName);
        EXPECT_THAT(recorder.texts, testing::Each(testing::AnyOf("0", kFailed)));
        EXPECT_EQ(download->curDirName(), "VornUpdate2");
    }
}

TEST_F(PackageDownloadTest, ABodyLargerThanAPackageMayBeIsRefused)
{
    limits.packageBytes = newPackage().size() - 1;
    PackageAnswer endless = with(&PackageAnswer::endless, true);
    endless.framing = BodyFraming::Chunked;
    for (const PackageAnswer &answer : {answerWith(), endless}) {
        serve(answer);
        pressAndFail(Kind::TooLarge);
        EXPECT_EQ(recorder.texts.back(), kFailed);
    }
}

TEST_F(PackageDownloadTest, ASecondDownloadDuringTheFirstNeverMixesWithIt)
{
    serve(with(&PackageAnswer::bodyPause, 1s));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.texts.contains("0"); }));
    PackageAnswer fast = answerWith(makeArchive({{"fast.bin", "fast"}}));
    fast.lastModified = "fast";
    ASSERT_TRUE(server->setAnswer(fast));
    press();
    const Tree fastTree = {{"VornUpdate2/fast.bin", "fast"}};
    for (const qsizetype ends : {1, 2}) {
        ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= ends; }));
        expectEnd(Outcome::Installed);
        EXPECT_TRUE((tree() == fastTree && storedDate() == "fast") ||
                    (tree() == kNew && storedDate() == kDate))
            << tree().keys().join(' ').toStdString() << storedDate().toStdString();
    }
    EXPECT_FALSE(download->isRunning());
    EXPECT_EQ(recorder.texts.count(kSucceeded), 2);
}

TEST_F(PackageDownloadTest, ASecondDownloadThatFindsNoPackageLeavesTheFirstAlone)
{
    serve(with(&PackageAnswer::bytesPerSecond, 200));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.bytes.first > 0; }));
    ASSERT_TRUE(server->setAnswer(with(&PackageAnswer::redirectTo, "http")));
    press();
    ASSERT_TRUE(eventually([&] { return !recorder.ends.empty(); }));
    expectEnd(Outcome::Failed, Kind::InsecureRedirect);
    EXPECT_EQ(tree(), kOld);
    ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= 2; }));
    expectEnd(Outcome::Installed);
    EXPECT_EQ(tree(), kNew);
}

TEST_F(PackageDownloadTest, ADownloadThatIsNoLongerWantedIsNeverHeardOfAgain)
{
    limits.delayBeforeUnpacking = 0ms;
    serve(with(&PackageAnswer::bytesPerSecond, 200));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.bytes.first > 0; }));
    download.reset();
    ASSERT_TRUE(eventually([&] { return server->report().endedRequests() == 1; }));
    EXPECT_EQ(tree(), kOld);

    serve(answerWith());
    press();
    ASSERT_TRUE(eventually([&] { return recorder.phases.contains(Phase::Unpacking); }));
    download.reset();
    runEventLoopFor(100ms); // a late report would arrive in this time
    EXPECT_TRUE(recorder.ends.isEmpty());
    EXPECT_TRUE(tree() == kOld || tree() == kNew) << tree().keys().join(' ').toStdString();
}

} // namespace
