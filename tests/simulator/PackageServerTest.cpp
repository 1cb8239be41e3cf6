#include "simulator/PackageServer.h"

#include <QElapsedTimer>
#include <QSslConfiguration>
#include <QSslSocket>

#include <gtest/gtest.h>

namespace vorn::test {
namespace {

using namespace std::chrono_literals;

constexpr int LimitMs = 20'000;

struct Reply
{
    QByteArray head;
    QByteArray body;
};

// Asks for an address and takes everything until the server closes.
Reply ask(QTcpSocket &socket, const char *path = "/software/VornUpdate2.zip")
{
    socket.write(QByteArray("GET ") + path + " HTTP/1.1\r\nHost: here:1\r\n\r\n");
    QByteArray all;
    while (socket.waitForReadyRead(LimitMs))
        all += socket.readAll();
    const qsizetype end = all.indexOf("\r\n\r\n");
    return {all.left(end + 2), all.mid(end + 4)};
}

// By TLS, with trust in the server's authority.
Reply fetch(PackageServer &server, const PackageAnswer &answer,
            const char *path = "/software/VornUpdate2.zip")
{
    EXPECT_TRUE(server.setAnswer(answer));
    QSslSocket socket;
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromData(server.authority()));
    socket.setSslConfiguration(configuration);
    socket.connectToHostEncrypted("127.0.0.1", server.port());
    EXPECT_TRUE(socket.waitForEncrypted(LimitMs)) << socket.errorString().toStdString();
    return ask(socket, path);
}

TEST(PackageServer, AnswersAsAskedForAndTellsWhatItServed)
{
    PackageAnswer wanted;
    wanted.package = QByteArray("0123456789").repeated(20'000);
    wanted.lastModified = "Wed, 01 Jan 2025 00:00:00 GMT";
    wanted.suggestedName = "../../x.zip";
    wanted.extraHeaders = {"X-Mine: 1"};
    PackageServer server(wanted);
    QString problem;
    ASSERT_TRUE(server.start(&problem)) << problem.toStdString();
    const Reply got = fetch(server, wanted);
    EXPECT_TRUE(got.head.startsWith("HTTP/1.1 200 OK\r\n"));
    for (const char *line :
         {"Content-Length: 200000", "X-Mine: 1", "Last-Modified: Wed, 01 Jan 2025 00:00:00 GMT",
          "Content-Disposition: attachment; filename=\"../../x.zip\""})
        EXPECT_TRUE(got.head.contains(QByteArray("\r\n") + line + "\r\n")) << line;
    EXPECT_EQ(got.body, wanted.package);
    ASSERT_TRUE(server.waitForEnds(1, 5s));
    const ServedRequest served = server.report().requests.front();
    EXPECT_EQ(served.target, "/software/VornUpdate2.zip");
    EXPECT_EQ(served.status, 200);
    EXPECT_EQ(served.bodyBytes, wanted.package.size());
    EXPECT_EQ(served.end, ServedRequest::End::Complete);
    EXPECT_TRUE(fetch(server, wanted, "/other").head.startsWith("HTTP/1.1 404 Not Found\r\n"));

    // A head that lies, with a line that is none, and a slow body that ends early.
    PackageAnswer lying = wanted;
    lying.declaredLength = qint64{1} << 40;
    lying.garbageHeaders = true;
    lying.cutAt = 100'000;
    lying.bytesPerSecond = 400'000;
    QElapsedTimer time;
    time.start();
    const Reply lie = fetch(server, lying);
    EXPECT_GE(time.elapsed(), 240);
    EXPECT_TRUE(lie.head.contains("Content-Length: 1099511627776\r\n"));
    EXPECT_TRUE(lie.head.contains("\r\nthis line has no colon\r\n"));
    EXPECT_EQ(lie.body, wanted.package.first(100'000));

    wanted.redirectTo = "http";
    EXPECT_TRUE(
        fetch(server, wanted)
            .head.contains("\r\nLocation: http://here:" + QByteArray::number(server.plainPort()) +
                           "/software/VornUpdate2.zip\r\n"));
    EXPECT_EQ(server.report().plainConnections, 0);
    QTcpSocket plain; // follows away from TLS
    plain.connectToHost("127.0.0.1", server.plainPort());
    ASSERT_TRUE(plain.waitForConnected(LimitMs));
    EXPECT_EQ(ask(plain).body, wanted.package);
    EXPECT_EQ(server.report().plainConnections, 1);
}

} // namespace
} // namespace vorn::test
