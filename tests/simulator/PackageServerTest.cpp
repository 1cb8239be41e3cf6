#include "simulator/PackageServer.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSslConfiguration>
#include <QSslSocket>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace vorn::test {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr int LimitMs = 20'000;

class PackageServerTest : public testing::Test
{
protected:
    static QByteArray package() { return QByteArray("0123456789").repeated(20'000); }
    static PackageAnswer answer()
    {
        PackageAnswer plain;
        plain.package = package();
        return plain;
    }

    void start(const PackageAnswer &first, CertificateKind kind = CertificateKind::Good)
    {
        m_server = std::make_unique<PackageServer>(first, kind);
        QString problem;
        ASSERT_TRUE(m_server->start(&problem)) << problem.toStdString();
    }

    // A connection by TLS that trusts the server's authority and expects a certificate for name.
    std::unique_ptr<QSslSocket> connection(const char *name = "127.0.0.1") const
    {
        auto socket = std::make_unique<QSslSocket>();
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setCaCertificates(QSslCertificate::fromData(m_server->authority()));
        socket->setSslConfiguration(configuration);
        socket->connectToHostEncrypted(QStringLiteral("127.0.0.1"), m_server->port(),
                                       QLatin1String(name));
        return socket;
    }

    static void ask(QTcpSocket &socket, const char *path = "/software/VornUpdate2.zip")
    {
        socket.write(QByteArray("GET ") + path + " HTTP/1.1\r\nHost: here:1\r\n\r\n");
        socket.flush();
    }

    struct Reply
    {
        QByteArray head;
        QByteArray body;
    };
    // Everything until the server closes.
    static Reply reply(QTcpSocket &socket)
    {
        QByteArray all;
        while (socket.waitForReadyRead(LimitMs))
            all += socket.readAll();
        all += socket.readAll();
        const qsizetype end = all.indexOf("\r\n\r\n");
        return {all.left(end + 2), all.mid(end + 4)};
    }

    Reply fetch(const PackageAnswer &next, const char *path = "/software/VornUpdate2.zip")
    {
        EXPECT_TRUE(m_server->setAnswer(next));
        const std::unique_ptr<QSslSocket> socket = connection();
        EXPECT_TRUE(socket->waitForEncrypted(LimitMs)) << socket->errorString().toStdString();
        ask(*socket, path);
        return reply(*socket);
    }

    ServedRequest lastServed(int count) const
    {
        EXPECT_TRUE(m_server->waitForEnds(count, 5s));
        const PackageServerReport report = m_server->report();
        EXPECT_EQ(report.requests.size(), count);
        return report.requests.value(count - 1);
    }

    std::unique_ptr<PackageServer> m_server;
};

TEST_F(PackageServerTest, ServesThePackageWithTheHeadersAskedFor)
{
    PackageAnswer wanted = answer();
    wanted.lastModified = "Wed, 01 Jan 2025 00:00:00 GMT";
    wanted.suggestedName = "../../x.zip";
    wanted.extraHeaders = {"X-Mine: 1"};
    start(wanted);
    const Reply got = fetch(wanted);
    EXPECT_TRUE(got.head.startsWith("HTTP/1.1 200 OK\r\n"));
    for (const char *line :
         {"Content-Length: 200000", "X-Mine: 1", "Last-Modified: Wed, 01 Jan 2025 00:00:00 GMT",
          "Content-Disposition: attachment; filename=\"../../x.zip\""})
        EXPECT_TRUE(got.head.contains(QByteArray("\r\n") + line + "\r\n")) << line;
    EXPECT_EQ(got.body, package());

    const ServedRequest served = lastServed(1);
    EXPECT_EQ(served.target, "/software/VornUpdate2.zip");
    EXPECT_EQ(served.status, 200);
    EXPECT_EQ(served.bodyBytes, package().size());
    EXPECT_EQ(served.end, ServedRequest::End::Complete);
    EXPECT_TRUE(connection("localhost")->waitForEncrypted(LimitMs));
}

TEST_F(PackageServerTest, FramesTheBodyAsAskedFor)
{
    PackageAnswer next = answer();
    next.framing = BodyFraming::UntilClose;
    start(next);
    Reply got = fetch(next);
    EXPECT_FALSE(got.head.contains("Content-Length"));
    EXPECT_FALSE(got.head.contains("Last-Modified"));
    EXPECT_EQ(got.body, package());

    next.framing = BodyFraming::Chunked;
    got = fetch(next);
    EXPECT_TRUE(got.head.contains("Transfer-Encoding: chunked\r\n"));
    QByteArray joined;
    qsizetype at = 0;
    for (qsizetype size = 1; size > 0;) {
        const qsizetype line = got.body.indexOf("\r\n", at);
        ASSERT_GT(line, at);
        size = got.body.mid(at, line - at).toLongLong(nullptr, 16);
        joined += got.body.mid(line + 2, size);
        at = line + 2 + size + 2;
    }
    EXPECT_EQ(joined, package());
    EXPECT_EQ(at, got.body.size());
}

TEST_F(PackageServerTest, SendsAPageWithAnErrorStatus)
{
    PackageAnswer busy = answer();
    busy.status = 503;
    start(busy);
    EXPECT_THAT(fetch(busy).body.toStdString(), HasSubstr("<h1>503"));
    EXPECT_TRUE(fetch(answer(), "/other").head.startsWith("HTTP/1.1 404 Not Found\r\n"));
}

TEST_F(PackageServerTest, EndsTheBodyEarlyAndSaysOtherLengths)
{
    start(answer());
    PackageAnswer truncated = answer();
    truncated.truncateAt = 1000;
    PackageAnswer cut = answer();
    cut.cutAt = 70'000;
    PackageAnswer lying = answer();
    lying.declaredLength = qint64{1} << 40;
    struct Case
    {
        PackageAnswer next;
        const char *length;
        int sent;
    };
    int served = 0;
    for (const Case &c : {Case{truncated, "200000", 1000}, Case{cut, "200000", 70'000},
                          Case{lying, "1099511627776", 200'000}}) {
        const Reply got = fetch(c.next);
        EXPECT_TRUE(got.head.contains(QByteArray("Content-Length: ") + c.length + "\r\n"));
        EXPECT_EQ(got.body, package().first(c.sent));
        EXPECT_EQ(lastServed(++served).bodyBytes, c.sent);
    }
}

TEST_F(PackageServerTest, SendsASlowBodyAtItsRate)
{
    PackageAnswer slow = answer();
    slow.bytesPerSecond = 400'000;
    slow.bodyPause = 100ms;
    start(slow);
    QElapsedTimer time;
    time.start();
    EXPECT_EQ(fetch(slow).body, package());
    EXPECT_GE(time.elapsed(), 600);
}

TEST_F(PackageServerTest, SeesAClientThatGoesAway)
{
    PackageAnswer endless = answer();
    endless.endless = true;
    start(endless);
    std::unique_ptr<QSslSocket> socket = connection();
    ASSERT_TRUE(socket->waitForEncrypted(LimitMs));
    ask(*socket);
    while (socket->bytesAvailable() < 3 * package().size())
        ASSERT_TRUE(socket->waitForReadyRead(LimitMs));
    socket->abort();
    EXPECT_EQ(lastServed(1).end, ServedRequest::End::Abandoned);
    EXPECT_GE(lastServed(1).bodyBytes, 3 * package().size() - 1000);

    PackageAnswer paused = answer();
    paused.bodyPause = 1h;
    ASSERT_TRUE(m_server->setAnswer(paused));
    socket = connection();
    ASSERT_TRUE(socket->waitForEncrypted(LimitMs));
    ask(*socket);
    ASSERT_TRUE(socket->waitForReadyRead(LimitMs));
    EXPECT_TRUE(socket->readAll().endsWith("\r\n\r\n"));
    socket->abort();
    EXPECT_EQ(lastServed(2).end, ServedRequest::End::Abandoned);
    EXPECT_EQ(lastServed(2).bodyBytes, 0);
}

TEST_F(PackageServerTest, StaysSilentAfterTheRequestOrBeforeTheHandshake)
{
    PackageAnswer silent = answer();
    silent.silence = ServerSilence::Request;
    start(silent);
    std::unique_ptr<QSslSocket> socket = connection();
    ASSERT_TRUE(socket->waitForEncrypted(LimitMs));
    ask(*socket);
    ASSERT_TRUE(m_server->waitForRequests(1, 5s));
    EXPECT_FALSE(socket->waitForReadyRead(200));
    EXPECT_EQ(socket->state(), QAbstractSocket::ConnectedState);
    EXPECT_EQ(m_server->report().requests[0].status, 0);

    silent.silence = ServerSilence::Handshake;
    ASSERT_TRUE(m_server->setAnswer(silent));
    socket = connection();
    ASSERT_TRUE(socket->waitForConnected(LimitMs));
    EXPECT_FALSE(socket->waitForEncrypted(200));
    EXPECT_EQ(socket->state(), QAbstractSocket::ConnectedState);
}

TEST_F(PackageServerTest, RedirectsAndSeesWhoFollowsAwayFromTls)
{
    PackageAnswer next = answer();
    start(next);
    const auto location = [&](const char *to) {
        next.redirectTo = to;
        const Reply got = fetch(next);
        EXPECT_TRUE(got.head.startsWith("HTTP/1.1 302 Found\r\n"));
        const qsizetype at = got.head.indexOf("\r\nLocation: ") + 12;
        return got.head.mid(at, got.head.indexOf("\r\n", at) - at).toStdString();
    };
    EXPECT_EQ(location("loop"), "https://here:1/software/VornUpdate2.zip");
    EXPECT_EQ(location("ftp://other/"), "ftp://other/");
    EXPECT_EQ(location("http"),
              "http://here:" + std::to_string(m_server->plainPort()) + "/software/VornUpdate2.zip");
    EXPECT_EQ(location("https"), "https://here:1/moved/VornUpdate2.zip");
    EXPECT_EQ(fetch(next, "/moved/VornUpdate2.zip").body, package());
    EXPECT_EQ(m_server->report().plainConnections, 0);

    QTcpSocket plain;
    plain.connectToHost(QStringLiteral("127.0.0.1"), m_server->plainPort());
    ASSERT_TRUE(plain.waitForConnected(LimitMs));
    ask(plain);
    EXPECT_EQ(reply(plain).body, package());
    EXPECT_EQ(m_server->report().plainConnections, 1);
    EXPECT_FALSE(lastServed(6).secure);
}

TEST_F(PackageServerTest, PutsGarbageAmongTheHeaders)
{
    PackageAnswer garbage = answer();
    garbage.garbageHeaders = true;
    start(garbage);
    const Reply got = fetch(garbage);
    EXPECT_TRUE(got.head.contains("\r\nthis line has no colon\r\n"));
    EXPECT_EQ(got.body, package());
}

TEST_F(PackageServerTest, HangsUpOnWhatIsNoRequest)
{
    start(answer());
    for (const QByteArray &text : {QByteArray("what?\r\n\r\n"), QByteArray(100'000, 'x')}) {
        const std::unique_ptr<QSslSocket> socket = connection();
        ASSERT_TRUE(socket->waitForEncrypted(LimitMs));
        socket->write(text);
        EXPECT_EQ(reply(*socket).body, QByteArray());
        EXPECT_EQ(socket->state(), QAbstractSocket::UnconnectedState);
    }
    EXPECT_EQ(m_server->report().requests.size(), 0);
}

TEST_F(PackageServerTest, ShowsTheCertificateAskedFor)
{
    const auto errors = [&](CertificateKind kind) {
        start(answer(), kind);
        const std::unique_ptr<QSslSocket> socket = connection();
        EXPECT_FALSE(socket->waitForEncrypted(LimitMs));
        QList<QSslError::SslError> all;
        for (const QSslError &error : socket->sslHandshakeErrors())
            all.append(error.error());
        return all;
    };
    using testing::Contains;
    using testing::ElementsAre;
    EXPECT_THAT(errors(CertificateKind::WrongName), ElementsAre(QSslError::HostNameMismatch));
    EXPECT_THAT(errors(CertificateKind::Expired), ElementsAre(QSslError::CertificateExpired));
    EXPECT_THAT(errors(CertificateKind::OtherAuthority),
                Contains(QSslError::UnableToGetLocalIssuerCertificate));
}

TEST_F(PackageServerTest, WritesTheAuthorityToAFileAndRefusesNonsense)
{
    start(answer());
    QFile file(m_server->authorityFile());
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), m_server->authority());

    PackageAnswer nonsense = answer();
    nonsense.truncateAt = 1;
    nonsense.cutAt = 1;
    EXPECT_FALSE(m_server->setAnswer(nonsense));
    QString problem;
    EXPECT_FALSE(PackageServer(nonsense).start(&problem));
    EXPECT_THAT(problem.toStdString(), HasSubstr("either truncated or cut"));
    EXPECT_FALSE(PackageServer(answer()).start(&problem, m_server->port()));
    EXPECT_THAT(problem.toStdString(), HasSubstr("in use"));
}

} // namespace
} // namespace vorn::test
