#include "firmware/PackageDownload.h"

#include "firmware/FirmwareLibrary.h"
#include "platform/Directories.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"
#include "simulator/PackageServer.h"
#include "tests/support/Eventually.h"
#include "tests/support/QtPrinting.h"
#include "tests/ziparchive/Tree.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <gmock/gmock.h>

using namespace vorn;
using namespace std::chrono_literals;
using Kind = PackageProblemKind;

namespace {

const QStringList kInstalled = {"response", "progress", "unpack", "installed", "folder changed"};
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

// An answer with one unusual option.
template <typename Value>
PackageAnswer with(Value PackageAnswer::*option, std::type_identity_t<Value> value,
                   PackageAnswer answer = answerWith())
{
    answer.*option = std::move(value);
    return answer;
}

QString storedDate()
{
    return UserDefaults::stringForKey(PackageDownload::KEY_LAST_MODIFIED);
}

// Consecutive progress is one event.
struct Recorder : PackageObserver
{
    void packageResponseDidArrive(qint64 total) override
    {
        events += "response";
        bytes = {0, total};
    }
    void packageDidProgress(qint64 received, qint64 total) override
    {
        if (!events.endsWith("progress"))
            events += "progress";
        bytes = {received, total};
    }
    void packageWillUnpack() override { events += "unpack"; }
    void packageIsUpToDate() override { end("up to date"); }
    void packageDidFail(const PackageProblem &problem, bool showsInStatus) override
    {
        end(showsInStatus ? "failed" : "failed quietly", problem);
    }
    void packageWasInstalled() override
    {
        end("installed");
        dates += storedDate();
    }
    void firmwareFolderDidChange() override
    {
        events += "folder changed";
        dates += storedDate();
    }
    void end(const QString &event, const PackageProblem &problem = {})
    {
        events += event;
        ends += problem;
    }

    QStringList events;
    QList<PackageProblem> ends;
    QPair<qint64, qint64> bytes = {0, -1}; // received, of how many
    QStringList dates;                     // stored at the installation, and at the folder's change
};

struct PackageDownloadTest : testing::Test, FirmwareLibraryObserver
{
    PackageDownloadTest() { MainQueue::instance(); }

    void firmwareListDidChange(const QStringList &) override {}

    // A program starts, with this in the caches directory and this date from an earlier run.
    void begin(const Tree &before, const QString &storedDate)
    {
        download.reset();
        recorder = {};
        writeTree(cachesDirectory(), before);
        UserDefaults::setStringForKey(storedDate, PackageDownload::KEY_LAST_MODIFIED);
        library = std::make_unique<FirmwareLibrary>(*this);
        library->readFirmWare(-1);
    }

    // A program starts with older firmware, and a server that answers so.
    void serve(const PackageAnswer &answer, CertificateKind certificate = CertificateKind::Good)
    {
        begin(kOld, "before");
        server = std::make_unique<PackageServer>(answer, certificate);
        ASSERT_TRUE(server->start());
        location = PackageLocation::onHost(server->host()).value();
        ASSERT_FALSE(location.addCertificates(server->authorityFile()));
    }

    void press()
    {
        if (!download)
            download = std::make_unique<PackageDownload>(location, *library, recorder, limits);
        ASSERT_TRUE(download->sendRequest());
    }
    void waitForEnds(qsizetype count)
    {
        ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= count; }));
    }
    // Presses, and returns the events up to the end.
    QStringList pressAndWait()
    {
        recorder.events.clear();
        press();
        waitForEnds(recorder.ends.size() + 1);
        EXPECT_FALSE(download->isRunning());
        return recorder.events;
    }

    bool serverSawTheEnd() const
    {
        return eventually([&] {
            const QList<ServedRequest> &requests = server->report().requests;
            return !requests.isEmpty() && requests.back().end != ServedRequest::End::Running;
        });
    }

    // Only a completely received answer is saved, and nothing else changes.
    void pressAndFail(Kind problem, const QStringList &events)
    {
        EXPECT_EQ(pressAndWait(), events);
        EXPECT_EQ(recorder.ends.value(recorder.ends.size() - 1).kind, problem);
        const bool isWhole = problem == Kind::HttpStatus || problem == Kind::NotAnArchive;
        EXPECT_EQ(treeAt(cachesDirectory()).contains(kArchive), isWhole);
        EXPECT_EQ(tree(), kOld);
        EXPECT_EQ(storedDate(), "before");
    }

    // The caches directory without the archive, which may be an error page.
    static Tree tree() { return treeAt(cachesDirectory(), kArchive); }

    std::unique_ptr<PackageServer> server;
    PackageLocation location;
    PackageLimits limits{.delayBeforeUnpacking = 20ms};
    Recorder recorder;
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
        EXPECT_EQ(pressAndWait(), kInstalled);
        const qint64 size = newPackage().size();
        EXPECT_EQ(recorder.bytes, qMakePair(size, isCounted ? size : 0));
        EXPECT_EQ(tree(), kNew);
        EXPECT_EQ(treeAt(cachesDirectory())[kArchive], newPackage());
        EXPECT_EQ(recorder.dates, (QStringList{stored, storedDate()}));
        EXPECT_EQ(storedDate(), QString(answer.lastModified.value_or(QByteArray())));
        EXPECT_EQ(storedDate().isNull(), !answer.lastModified.has_value());
    }
}

TEST_F(PackageDownloadTest, AnInstalledPackageIsNotDownloadedAgain)
{
    serve(with(&PackageAnswer::bodyPause, 60s));
    begin(kOld, kDate);
    EXPECT_EQ(pressAndWait(), (QStringList{"response", "up to date"}));
    EXPECT_EQ(download->state().mIsCancel, 1);
    EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    ASSERT_TRUE(serverSawTheEnd());
    EXPECT_EQ(server->report().requests.front().bodyBytes, 0);

    // A failure without a response still finds the installed package's date: nothing to show.
    server.reset();
    EXPECT_EQ(pressAndWait(), QStringList("failed quietly"));
}

// The status line shows a failure without an accepted response, and one of a whole answer.
TEST_F(PackageDownloadTest, AnAnswerThatCannotBeInstalledFailsAndChangesNothing)
{
    const QStringList unpacked = {"response", "progress", "unpack", "failed"};
    const QStringList brokenOff = {"response", "progress", "failed quietly"};
    const QStringList refused = {"response", "failed"};
    const QStringList noResponse = {"failed"};
    const qint64 half = newPackage().size() / 2;
    const auto truncated = with(&PackageAnswer::truncateAt, half);
    const auto cut = with(&PackageAnswer::cutAt, half);
    const auto chunked = with(&PackageAnswer::framing, BodyFraming::Chunked);
    const auto cutChunks = with(&PackageAnswer::cutAt, half, chunked);
    const auto endless = with(&PackageAnswer::endless, true, chunked);
    const auto slow = with(&PackageAnswer::bytesPerSecond, half / 2);
    const auto paused = with(&PackageAnswer::bodyPause, 60s);
    const auto mute = with(&PackageAnswer::silence, ServerSilence::Handshake);
    const auto silent = with(&PackageAnswer::silence, ServerSilence::Request);
    const auto hidden = with(&PackageAnswer::suggestedName, ".zip");
    struct Case
    {
        Kind problem;
        QStringList events;
        PackageAnswer answer;
        UrlSession::Timeouts timeouts{};
        qint64 packageBytes = 1 << 20;
    };
    const Case cases[] = {
        {Kind::HttpStatus, unpacked, with(&PackageAnswer::status, 401)},
        {Kind::HttpStatus, unpacked, with(&PackageAnswer::status, 503)},
        {Kind::NotAnArchive, unpacked, answerWith("no archive")},
        {Kind::ConnectionLost, brokenOff, truncated},
        {Kind::ConnectionLost, brokenOff, cutChunks},
        {Kind::TooLarge, refused, paused, {}, 1}, // by the announced length
        {Kind::TooLarge, refused, endless, {}, 1},
        {Kind::UnusableName, refused, hidden},
        {Kind::TimedOut, {"response", "failed quietly"}, paused, {.idle = 2s}},
        {Kind::Encryption, noResponse, mute, {.idle = 300ms}},
        {Kind::TimedOut, noResponse, silent, {.response = 300ms}},
        {Kind::TooSlow, brokenOff, slow, {.total = 3s}},
        {Kind::InsecureRedirect, noResponse, with(&PackageAnswer::redirectTo, "http")},
        {Kind::Protocol, noResponse, with(&PackageAnswer::redirectTo, "loop")},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(testing::Message() << "case " << &c - cases);
        limits.timeouts = c.timeouts;
        limits.packageBytes = c.packageBytes;
        serve(c.answer);
        pressAndFail(c.problem, c.events);
        EXPECT_EQ(download->curDirName(), "VornUpdate2");
        EXPECT_EQ(server->report().plainConnections, 0);
        if (c.problem == Kind::HttpStatus) {
            EXPECT_EQ(recorder.ends.value(0).code, c.answer.status);
        }
    }
    limits.timeouts = {.idle = 2s}; // of each wait, not of the whole transfer
    serve(slow);
    EXPECT_EQ(pressAndWait(), kInstalled);

    // The flag of the accepted download stays: a failure without a response is not shown either.
    serve(cut);
    pressAndFail(Kind::ConnectionLost, brokenOff);
    server.reset();
    pressAndFail(Kind::Unreachable, {"failed quietly"});
    EXPECT_EQ(download->state().mIsCancel, 0);

    for (const CertificateKind certificate :
         {CertificateKind::WrongName, CertificateKind::OtherAuthority, CertificateKind::Expired}) {
        serve(answerWith(), certificate);
        pressAndFail(Kind::Certificate, noResponse);
    }
}

TEST_F(PackageDownloadTest, AHeaderThatNeverEndsDoesNotFillTheMemory)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's heap cannot be measured";
#endif
    QTcpServer proxy;
    ASSERT_TRUE(proxy.listen(QHostAddress::LocalHost));
    QObject::connect(&proxy, &QTcpServer::newConnection, [&] {
        QTcpSocket *const client = proxy.nextPendingConnection();
        QObject::connect(client, &QIODevice::bytesWritten,
                         [client] { client->write(QByteArray(1 << 20, 'x')); });
        client->write("HTTP/1.1 200 OK\r\nX: ");
    });
    qputenv("https_proxy", "http://127.0.0.1:" + QByteArray::number(proxy.serverPort()));
    begin(kOld, "before");
    location = PackageLocation::onHost("packages.invalid").value();
    pressAndFail(Kind::Protocol, {"failed"});
    qunsetenv("https_proxy");
}

TEST_F(PackageDownloadTest, TheServerNamesTheArchiveAndItsFolder)
{
    const QByteArray package = makeArchive({{"a/", {}}, {"a/new.bin", "new"}});
    serve(with(&PackageAnswer::suggestedName, "../../a.b.zip", answerWith(package)));
    EXPECT_EQ(pressAndWait(), kInstalled);
    Tree expected = kOld;
    expected["a/new.bin"] = "new";
    expected["a/.published-by-vornupdater"] = {};
    expected["a.b.zip"] = package;
    EXPECT_EQ(treeAt(cachesDirectory()), expected);
    EXPECT_EQ(download->curDirName(), "a");
}

TEST_F(PackageDownloadTest, ASecondDownloadDuringTheFirstNeverMixesWithIt)
{
    serve(with(&PackageAnswer::bodyPause, 1s));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.events.contains("response"); }));
    PackageAnswer fast = answerWith(makeArchive({{"fast.bin", "fast"}}));
    fast.lastModified = "fast";
    server->setAnswer(fast);
    press();
    EXPECT_FALSE(download->sendRequest()) << "a third at once";
    const Tree fastTree = {{"VornUpdate2/fast.bin", "fast"}};
    for (const qsizetype ends : {1, 2}) {
        waitForEnds(ends);
        EXPECT_EQ(recorder.events.count("installed"), recorder.ends.size());
        EXPECT_TRUE((tree() == fastTree && storedDate() == "fast") ||
                    (tree() == kNew && storedDate() == kDate))
            << tree().keys().join(' ').toStdString() << storedDate().toStdString();
    }
    EXPECT_FALSE(download->isRunning());
}

TEST_F(PackageDownloadTest, ASecondDownloadThatFindsNoPackageLeavesTheFirstAlone)
{
    serve(with(&PackageAnswer::bytesPerSecond, 200));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.bytes.first > 0; }));
    server->setAnswer(with(&PackageAnswer::redirectTo, "http"));
    press();
    waitForEnds(1);
    EXPECT_TRUE(recorder.events.contains("failed quietly"));
    EXPECT_EQ(tree(), kOld);
    waitForEnds(2);
    EXPECT_TRUE(recorder.events.contains("installed"));
    EXPECT_EQ(tree(), kNew);
}

TEST_F(PackageDownloadTest, ADestroyedDownloadReportsNothingMore)
{
    limits.delayBeforeUnpacking = 0ms;
    serve(with(&PackageAnswer::bytesPerSecond, 200));
    press();
    ASSERT_TRUE(eventually([&] { return recorder.bytes.first > 0; }));
    download.reset();
    ASSERT_TRUE(serverSawTheEnd());
    EXPECT_EQ(tree(), kOld);

    serve(answerWith());
    press();
    ASSERT_TRUE(eventually([&] { return recorder.events.contains("unpack"); }));
    download.reset();
    runEventLoopFor(100ms); // a late report would arrive in this time
    EXPECT_TRUE(recorder.ends.isEmpty());
    EXPECT_TRUE(tree() == kOld || tree() == kNew) << tree().keys().join(' ').toStdString();
}

} // namespace
