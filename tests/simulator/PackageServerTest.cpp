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
    EXPECT_TRUE(fetch(wanted, "/other").head.startsWith("HTTP/1.1 404 Not Found\r\n"));

    // A head that lies, with a line that is none, and a body that ends as soon as it began.
    PackageAnswer lying = answer();
    lying.declaredLength = qint64{1} << 40;
    lying.garbageHeaders = true;
    lying.cutAt = 1000;
    const Reply lie = fetch(lying);
    EXPECT_TRUE(lie.head.contains("Content-Length: 1099511627776\r\n"));
    EXPECT_TRUE(lie.head.contains("\r\nthis line has no colon\r\n"));
    EXPECT_EQ(lie.body, package().first(1000));
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

TEST_F(PackageServerTest, RedirectsAndSeesWhoFollowsAwayFromTls)
{
    PackageAnswer next = answer();
    start(next);
    next.redirectTo = "http";
    EXPECT_TRUE(fetch(next).head.contains(
        "\r\nLocation: http://here:" + QByteArray::number(m_server->plainPort()) +
        "/software/VornUpdate2.zip\r\n"));
    EXPECT_EQ(m_server->report().plainConnections, 0);

    QTcpSocket plain;
    plain.connectToHost(QStringLiteral("127.0.0.1"), m_server->plainPort());
    ASSERT_TRUE(plain.waitForConnected(LimitMs));
    ask(plain);
    EXPECT_EQ(reply(plain).body, package());
    EXPECT_EQ(m_server->report().plainConnections, 1);
    EXPECT_FALSE(lastServed(2).secure);
}

} // namespace
} // namespace vorn::test
