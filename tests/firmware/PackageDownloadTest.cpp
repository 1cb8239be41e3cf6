#include "firmware/PackageDownload.h"

#include "firmware/FirmwareLibrary.h"
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
using Kind = PackageProblemKind;

namespace {

// What an observer is told of a download that installs its package.
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

// The new package, or another answer, with one option that is not the usual one.
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

// Keeps what it is told; of progress in a row the last.
class Recorder : public PackageObserver
{
public:
    void packageResponseDidArrive(qint64 total) override { note("response", {0, total}); }
    void packageDidProgress(qint64 received, qint64 total) override
    {
        if (events.endsWith("progress"))
            events.removeLast();
        note("progress", {received, total});
    }
    void packageWillUnpack() override { note("unpack", bytes); }
    void packageIsUpToDate() override { end("up to date", {}); }
    void packageDidFail(const PackageProblem &problem, bool showsInStatus) override
    {
        end(showsInStatus ? "failed" : "failed quietly", problem);
    }
    void packageWasInstalled() override
    {
        end("installed", {});
        dates.append(storedDate());
    }
    void firmwareFolderDidChange() override
    {
        note("folder changed", bytes);
        dates.append(storedDate());
    }

    QStringList events;
    QList<PackageProblem> ends;
    QPair<qint64, qint64> bytes = {0, -1}; // received, of how many
    QStringList dates;                     // stored when told of the end, and of the folder

private:
    void note(const QString &event, QPair<qint64, qint64> howFar)
    {
        events.append(event);
        bytes = howFar;
    }
    void end(const QString &event, const PackageProblem &problem)
    {
        note(event, bytes);
        ends.append(problem);
    }
};

struct PackageDownloadTest : testing::Test, FirmwareLibraryObserver
{
    PackageDownloadTest() { MainQueue::instance(); }

    void firmwareListDidChange(const QStringList &) override {}

    // A fresh program: what is in the caches directory, and the date stored by an earlier one.
    void begin(const Tree &before, const QString &storedDate)
    {
        download.reset();
        recorder = {};
        writeTree(cachesDirectory(), before);
        UserDefaults::setStringForKey(storedDate, PackageDownload::KEY_LAST_MODIFIED);
        library = std::make_unique<FirmwareLibrary>(*this);
        library->readFirmWare(-1);
    }

    // A fresh program with older firmware, and a server that answers so.
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

    void pressAndWait()
    {
        const qsizetype ends = recorder.ends.size() + 1;
        press();
        ASSERT_TRUE(eventually([&] { return recorder.ends.size() == ends; }));
        EXPECT_FALSE(download->isRunning());
    }

    void expectEnd(const QString &event, Kind problem = Kind::None)
    {
        ASSERT_FALSE(recorder.ends.isEmpty());
        EXPECT_EQ(recorder.ends.back().kind, problem) << qPrintable(recorder.ends.back().text);
        EXPECT_EQ(recorder.events.count(event), 1) << qPrintable(recorder.events.join(' '));
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
        recorder.events.clear();
        pressAndWait();
        EXPECT_EQ(recorder.events, events);
        expectEnd(events.last(), problem);
        const bool isWhole = problem == Kind::HttpStatus || problem == Kind::NotAnArchive;
        EXPECT_EQ(treeAt(cachesDirectory()).contains(kArchive), isWhole);
        EXPECT_EQ(tree(), kOld);
        EXPECT_EQ(storedDate(), "before");
    }

    // What is in the caches directory but for the archive, which may be an error page.
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
        pressAndWait();
        EXPECT_EQ(recorder.events, kInstalled);
        const qint64 size = newPackage().size();
        EXPECT_EQ(recorder.bytes, qMakePair(size, isCounted ? size : 0));
        EXPECT_EQ(tree(), kNew);
        EXPECT_EQ(treeAt(cachesDirectory())[kArchive], newPackage());
        EXPECT_EQ(recorder.dates, (QStringList{stored, storedDate()}));
        EXPECT_EQ(storedDate(), QString(answer.lastModified.value_or(QByteArray())));
        EXPECT_EQ(storedDate().isNull(), !answer.lastModified.has_value());
    }
}

TEST_F(PackageDownloadTest, APackageThatIsInstalledAlreadyIsNotReadAgain)
{
    serve(with(&PackageAnswer::bodyPause, 60s));
    begin(kOld, kDate);
    pressAndWait();
    EXPECT_EQ(recorder.events, QStringList({"response", "up to date"}));
    EXPECT_EQ(download->state().mIsCancel, 1);
    EXPECT_EQ(treeAt(cachesDirectory()), kOld);
    ASSERT_TRUE(serverSawTheEnd());
    EXPECT_EQ(server->report().requests.front().bodyBytes, 0);

    // A failure without a response still finds the installed package's date: nothing to show.
    server.reset();
    pressAndWait();
    expectEnd("failed quietly", Kind::Unreachable);
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
        {Kind::HttpStatus, unpacked, with(&PackageAnswer::status, 404)},
        {Kind::HttpStatus, unpacked, with(&PackageAnswer::status, 503)},
        {Kind::NotAnArchive, unpacked, answerWith("no archive")},
        {Kind::ConnectionLost, brokenOff, truncated},
        {Kind::ConnectionLost, brokenOff, cutChunks},
        {Kind::TooLarge, refused, answerWith(), {}, 1},
        {Kind::TooLarge, refused, endless, {}, 1},
        {Kind::UnusableName, refused, hidden},
        {Kind::TimedOut, {"response", "failed quietly"}, paused, {.idle = 2s}},
        {Kind::TimedOut, noResponse, mute, {.idle = 300ms}},
        {Kind::TimedOut, noResponse, silent, {.response = 300ms}},
        {Kind::TimedOut, brokenOff, slow, {.total = 3s}},
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
        EXPECT_TRUE(c.problem != Kind::HttpStatus ||
                    recorder.ends.value(0).code == c.answer.status);
    }
    limits.timeouts = {.idle = 2s}; // of each wait, not of the whole transfer
    serve(slow);
    pressAndWait();
    expectEnd("installed");

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
        expectEnd("installed");
        Tree expected = kOld;
        expected[folder + "/new.bin"] = "new";
        expected[folder + "/.published-by-vornupdater"] = {};
        expected[archive] = answer.package;
        EXPECT_EQ(treeAt(cachesDirectory()), expected);
        EXPECT_EQ(download->curDirName(), folder);
    }
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
        ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= ends; }));
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
    ASSERT_TRUE(eventually([&] { return !recorder.ends.empty(); }));
    expectEnd("failed quietly", Kind::InsecureRedirect);
    EXPECT_EQ(tree(), kOld);
    ASSERT_TRUE(eventually([&] { return recorder.ends.size() >= 2; }));
    expectEnd("installed");
    EXPECT_EQ(tree(), kNew);
}

TEST_F(PackageDownloadTest, ADownloadThatIsNoLongerWantedIsNeverHeardOfAgain)
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
