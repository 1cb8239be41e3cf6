#include "packages/PackageDownload.h"
#include "platform/Directories.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"
#include "simulator/PackageServer.h"
#include "tests/packages/Tree.h"
#include "tests/support/Eventually.h"
#include "tests/support/QtPrinting.h"

#include <QDir>

#include <gmock/gmock.h>

using namespace vorn;
using namespace std::chrono_literals;
using testing::IsEmpty;
using Kind = PackageProblem::Kind;
using Outcome = PackageObserver::Outcome;
using Phase = PackageObserver::Phase;

namespace {

const QString kUpToDate = "Prompt:Currently it is the latest firmware,no need to download";
const QString kFailed = "Prompt:Failed to download the latest firmware";
const QString kSucceeded = "Prompt:Successfully downloaded the latest firmware";
const QString kWhole = "Prompt:Progress100%";
const QByteArray kDate = "Tue, 01 Apr 2025 10:00:00 GMT";
const Tree kOld = {{"VornUpdate2/VORN_I-old.bin", "old"}};
const Tree kNew = {{"VornUpdate2/VORN_I-new.bin", "new"}};

QByteArray newPackage()
{
    static const QByteArray archive =
        makeArchive({{"VornUpdate2/", {}}, {"VornUpdate2/VORN_I-new.bin", "new"}});
    return archive;
}

PackageAnswer answerWith(const QByteArray &package)
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
    PackageAnswer answer = answerWith(newPackage());
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
            texts.back() = text;
        else
            texts.append(text);
    }
    void packageProgress(Phase phase, qint64 received, qint64 total) override
    {
        phases.append(phase);
        if (phase == Phase::Receiving) {
            lastReceived = received;
            lastTotal = total;
        }
    }
    void packageEnded(Outcome outcome, const PackageProblem &problem) override
    {
        ends.append(qMakePair(outcome, problem));
    }

    QStringList texts;
    QList<Phase> phases;
    QList<QPair<Outcome, PackageProblem>> ends;
    qint64 lastReceived = 0;
    qint64 lastTotal = -1;
};

class PackageDownloadTest : public testing::Test
{
protected:
    PackageDownloadTest() { MainQueue::instance(); }

    void SetUp() override { begin(kOld, {}); }

    // A fresh program: what is in the caches directory, and the date stored by an earlier one.
    void begin(const Tree &before, const QString &storedDate)
    {
        download.reset();
        recorder = {};
        refills.clear();
        QDir(cachesDirectory()).removeRecursively();
        writeTree(cachesDirectory(), before);
        UserDefaults::setStringForKey(storedDate, PackageDownload::KEY_LAST_MODIFIED);
        library =
            std::make_unique<FirmwareLibrary>([this](qint32 modelCode, const QStringList &titles) {
                refills.append({modelCode, titles});
            });
        library->readFirmWare(-1);
    }

    // The same server for all tests: its certificate takes a while to make.
    static void SetUpTestSuite() { theServer = started({}, CertificateKind::Good); }
    static void TearDownTestSuite() { theServer.reset(); }
    static std::unique_ptr<PackageServer> started(const PackageAnswer &answer, CertificateKind kind)
    {
        auto server = std::make_unique<PackageServer>(answer, kind);
        QString problem;
        EXPECT_TRUE(server->start(&problem)) << qPrintable(problem);
        return server;
    }

    void serve(const PackageAnswer &answer)
    {
        ASSERT_TRUE(theServer->setAnswer(answer));
        connectTo(*theServer);
    }

    // A server of another kind, or one that goes before the test does.
    void serveAlone(const PackageAnswer &answer,
                    CertificateKind certificate = CertificateKind::Good)
    {
        ownServer = started(answer, certificate);
        connectTo(*ownServer);
    }

    void connectTo(const PackageServer &server)
    {
        download.reset();
        location = PackageLocation::onHost(server.host()).value();
        QString problem;
        ASSERT_TRUE(location.addCertificates(server.authorityFile(), problem));
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

    static QString storedDate()
    {
        return UserDefaults::stringForKey(PackageDownload::KEY_LAST_MODIFIED);
    }

    // What is in the caches directory, archives (and error pages saved as such) left out.
    static Tree tree()
    {
        Tree all = treeAt(cachesDirectory());
        all.removeIf([](const Tree::iterator &item) { return item.key().endsWith(".zip"); });
        return all;
    }
    static QByteArray saved(const QString &name) { return treeAt(cachesDirectory()).value(name); }

    static inline std::unique_ptr<PackageServer> theServer;
    std::unique_ptr<PackageServer> ownServer;
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
        std::optional<QByteArray> date = kDate;
        BodyFraming framing = BodyFraming::Length;
        QByteArray redirect = {};
    };
    const Case cases[] = {
        {"first of all", {}, {}},
        {"newer", kOld, "Mon, 01 Jan 2024 10:00:00 GMT"},
        {"known, but the folder is gone", {}, kDate},
        {"without a date", kOld, kDate, {}},
        {"in chunks", kOld, {}, kDate, BodyFraming::Chunked},
        {"to the connection's end", kOld, {}, kDate, BodyFraming::UntilClose},
        {"redirected over HTTPS", kOld, {}, kDate, BodyFraming::Length, "https"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        const bool isCounted = c.framing == BodyFraming::Length;
        begin(c.before, c.stored);
        PackageAnswer answer = answerWith(newPackage());
        answer.lastModified = c.date;
        answer.framing = c.framing;
        answer.redirectTo = c.redirect;
        serve(answer);
        pressAndWait();
        EXPECT_EQ(recorder.texts,
                  QStringList({"0", isCounted ? kWhole : "Prompt:Progress--%", kSucceeded}));
        expectEnd(Outcome::Installed);
        EXPECT_EQ(recorder.phases.front(), Phase::Connecting);
        EXPECT_EQ(recorder.phases.back(), Phase::Unpacking);
        EXPECT_EQ(recorder.lastReceived, newPackage().size());
        EXPECT_EQ(recorder.lastTotal, isCounted ? newPackage().size() : 0);
        EXPECT_EQ(tree(), kNew);
        EXPECT_EQ(saved("VornUpdate2.zip"), newPackage());
        EXPECT_EQ(storedDate(), c.date ? QString(*c.date) : QString());
        EXPECT_EQ(storedDate().isNull(), !c.date.has_value());
        EXPECT_EQ(refills.back(), qMakePair(2, QStringList("VORN_I-new.bin")));
    }
}

TEST_F(PackageDownloadTest, APackageThatIsInstalledAlreadyIsNotReadAgain)
{
    begin(kOld, kDate);
    serveAlone(with(&PackageAnswer::bodyPause, 60s));
    pressAndWait();
    EXPECT_EQ(recorder.texts, QStringList({"0", kUpToDate}));
    expectEnd(Outcome::UpToDate);
    EXPECT_EQ(download->state().mIsCancel, 1);
    EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    ASSERT_TRUE(ownServer->waitForEnds(1, 30s));
    EXPECT_EQ(ownServer->report().requests.front().bodyBytes, 0);

    // A failure without a response then still finds the date that it has: nothing to say.
    ownServer.reset();
    pressAndWait();
    EXPECT_EQ(recorder.texts, QStringList({"0", kUpToDate}));
    expectEnd(Outcome::Failed, Kind::Unreachable);
}

TEST_F(PackageDownloadTest, AnAnswerThatIsNoPackageIsSavedAndFails)
{
    for (const int status : {401, 404, 500, 503}) {
        SCOPED_TRACE(status);
        begin(kOld, "before");
        serve(with(&PackageAnswer::status, status));
        pressAndWait();
        EXPECT_EQ(recorder.texts, QStringList({"0", kWhole, kFailed}));
        expectEnd(Outcome::Failed, Kind::HttpStatus);
        EXPECT_EQ(recorder.ends.back().second.code, status);
        EXPECT_EQ(tree(), kOld);
        EXPECT_FALSE(saved("VornUpdate2.zip").isEmpty());
        EXPECT_EQ(storedDate(), "before");
    }
    begin(kOld, {});
    serve(answerWith("no archive"));
    pressAndWait();
    EXPECT_EQ(recorder.texts.back(), kFailed);
    expectEnd(Outcome::Failed, Kind::NotAnArchive);
    EXPECT_EQ(tree(), kOld);
}

TEST_F(PackageDownloadTest, ABodyThatBreaksOffChangesNothingAndShowsNoNewText)
{
    const PackageAnswer truncated = with(&PackageAnswer::truncateAt, newPackage().size() / 2);
    const PackageAnswer cut = with(&PackageAnswer::cutAt, newPackage().size() / 2);
    PackageAnswer cutChunks = cut;
    cutChunks.framing = BodyFraming::Chunked;
    for (const PackageAnswer &answer : {truncated, cut, cutChunks}) {
        begin(kOld, {});
        serveAlone(answer);
        pressAndWait();
        EXPECT_EQ(recorder.texts.first(), "0");
        EXPECT_FALSE(recorder.texts.contains(kFailed) || recorder.texts.contains(kSucceeded));
        expectEnd(Outcome::Failed, Kind::ConnectionLost);
        EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    }
    // The flag of the accepted download stays: a failure without a response shows nothing either.
    ownServer.reset();
    const QStringList before = recorder.texts;
    pressAndWait();
    EXPECT_EQ(recorder.texts, before);
    EXPECT_EQ(download->state().mIsCancel, 0);
    expectEnd(Outcome::Failed, Kind::Unreachable);
}

TEST_F(PackageDownloadTest, ATransferThatStandsStillIsGivenUpAndASlowOneIsNot)
{
    limits.transferTimeout = 300ms;
    for (const PackageAnswer &answer : {with(&PackageAnswer::bodyPause, 60s),
                                        with(&PackageAnswer::silence, ServerSilence::Request),
                                        with(&PackageAnswer::silence, ServerSilence::Handshake)}) {
        begin(kOld, {});
        serve(answer);
        pressAndWait();
        expectEnd(Outcome::Failed, Kind::TimedOut);
        EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    }

    limits.transferTimeout = 2s;
    begin(kOld, {});
    serve(with(&PackageAnswer::bytesPerSecond, newPackage().size() / 4));
    pressAndWait();
    expectEnd(Outcome::Installed);
}

TEST_F(PackageDownloadTest, OnlyATrustedServerOverHttpsIsListenedTo)
{
    struct Case
    {
        CertificateKind certificate;
        QByteArray redirect;
        bool trustsAuthority;
        Kind problem;
    };
    const Case cases[] = {
        {CertificateKind::WrongName, {}, true, Kind::Certificate},
        {CertificateKind::OtherAuthority, {}, true, Kind::Certificate},
        {CertificateKind::Expired, {}, true, Kind::Certificate},
        {CertificateKind::Good, {}, false, Kind::Certificate},
        {CertificateKind::Good, "http", true, Kind::InsecureRedirect},
        {CertificateKind::Good, "loop", true, Kind::Protocol},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message()
                     << static_cast<int>(c.certificate) << c.redirect.constData());
        begin(kOld, {});
        serveAlone(with(&PackageAnswer::redirectTo, c.redirect), c.certificate);
        if (!c.trustsAuthority)
            location = PackageLocation::onHost(ownServer->host()).value();
        pressAndWait();
        EXPECT_EQ(recorder.texts, QStringList(kFailed));
        expectEnd(Outcome::Failed, c.problem);
        EXPECT_EQ(treeAt(cachesDirectory()), kOld);
        EXPECT_EQ(ownServer->report().plainConnections, 0);
    }
    for (const Kind problem : {Kind::Unreachable, Kind::NotConfigured}) {
        begin(kOld, {});
        ownServer.reset();
        if (problem == Kind::NotConfigured)
            location = {};
        pressAndWait();
        EXPECT_EQ(recorder.texts, QStringList(kFailed));
        expectEnd(Outcome::Failed, problem);
    }
}

TEST_F(PackageDownloadTest, TheServerNamesTheArchiveAndItsFolder)
{
    struct Case
    {
        QByteArray name;
        QString archive; // empty: refused
        QString folder;
    };
    for (const Case &c : {Case{"other.zip", "other.zip", "other"},
                          {"../../x.zip", "x.zip", "x"},
                          {"a.b.zip", "a.b.zip", "a"},
                          {".zip", {}, {}},
                          {"..", {}, {}}}) {
        SCOPED_TRACE(c.name.constData());
        begin(kOld, {});
        PackageAnswer answer =
            answerWith(makeArchive({{c.folder + '/', {}}, {c.folder + "/new.bin", "new"}}));
        answer.suggestedName = c.name;
        serve(answer);
        pressAndWait();
        if (c.archive.isEmpty()) {
            EXPECT_THAT(recorder.texts, testing::Each(testing::AnyOf("0", kFailed)));
            expectEnd(Outcome::Failed, Kind::UnusableName);
            EXPECT_EQ(treeAt(cachesDirectory()), kOld);
            EXPECT_EQ(download->curDirName(), "VornUpdate2");
        } else {
            expectEnd(Outcome::Installed);
            Tree expected = kOld;
            expected[c.folder + "/new.bin"] = "new";
            EXPECT_EQ(tree(), expected);
            EXPECT_EQ(saved(c.archive), answer.package);
            EXPECT_EQ(download->curDirName(), c.folder);
        }
    }
}

TEST_F(PackageDownloadTest, ABodyLargerThanAPackageMayBeIsRefused)
{
    limits.packageBytes = newPackage().size() - 1;
    PackageAnswer endless = with(&PackageAnswer::endless, true);
    endless.framing = BodyFraming::Chunked;
    for (const PackageAnswer &answer : {answerWith(newPackage()), endless}) {
        begin(kOld, {});
        serve(answer);
        pressAndWait();
        EXPECT_EQ(recorder.texts.back(), kFailed);
        expectEnd(Outcome::Failed, Kind::TooLarge);
        EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    }
}

TEST_F(PackageDownloadTest, ASecondDownloadDuringTheFirstNeverMixesWithIt)
{
    PackageAnswer slow = answerWith(newPackage());
    slow.lastModified = "slow";
    slow.bodyPause = 1s;
    serve(slow);
    press();
    ASSERT_TRUE(eventually([&] { return recorder.texts.contains("0"); }));
    PackageAnswer fast = answerWith(makeArchive({{"fast.bin", "fast"}}));
    fast.lastModified = "fast";
    ASSERT_TRUE(theServer->setAnswer(fast));
    press();
    const Tree fastTree = {{"VornUpdate2/fast.bin", "fast"}};
    for (const qsizetype ends : {1, 2}) {
        ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= ends; }));
        expectEnd(Outcome::Installed);
        EXPECT_TRUE((tree() == fastTree && storedDate() == "fast") ||
                    (tree() == kNew && storedDate() == "slow"))
            << tree().keys().join(' ').toStdString() << storedDate().toStdString();
    }
    EXPECT_FALSE(download->isRunning());
    EXPECT_EQ(recorder.texts.count(kSucceeded), 2);
}

TEST_F(PackageDownloadTest, ASecondDownloadThatFindsNoPackageLeavesTheFirstAlone)
{
    serve(with(&PackageAnswer::bytesPerSecond, 200));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.lastReceived > 0; }));
    PackageAnswer elsewhere;
    elsewhere.redirectTo = "http";
    ASSERT_TRUE(theServer->setAnswer(elsewhere));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= 1; }));
    expectEnd(Outcome::Failed, Kind::InsecureRedirect);
    EXPECT_EQ(tree(), kOld);
    ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= 2; }));
    expectEnd(Outcome::Installed);
    EXPECT_EQ(tree(), kNew);
}

TEST_F(PackageDownloadTest, ADownloadThatIsNoLongerWantedIsNeverHeardOfAgain)
{
    limits.delayBeforeUnpacking = 0ms;
    serveAlone(with(&PackageAnswer::bytesPerSecond, 200));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.lastReceived > 0; }));
    download.reset();
    ASSERT_TRUE(ownServer->waitForEnds(1, 30s));
    EXPECT_EQ(tree(), kOld);

    recorder = {};
    serve(answerWith(newPackage()));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.phases.contains(Phase::Unpacking); }));
    download.reset();
    runEventLoopFor(100ms); // a late report would arrive in this time
    EXPECT_THAT(recorder.ends, IsEmpty());
    EXPECT_TRUE(tree() == kOld || tree() == kNew) << tree().keys().join(' ').toStdString();
}

} // namespace
