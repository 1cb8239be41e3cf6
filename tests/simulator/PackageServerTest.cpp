#include "simulator/PackageServer.h"

#include <QElapsedTimer>
#include <QSslSocket>

#include <gtest/gtest.h>

namespace vorn::test {
namespace {

using namespace std::chrono_literals;

constexpr int LimitMs = 20'000;

// Asks one of the server's ports for an address; the head and the body, once the server closes.
std::pair<QByteArray, QByteArray> ask(const PackageServer &server, quint16 port,
                                      const char *path = "/software/VornUpdate2.zip")
{
    QSslSocket socket;
    socket.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket.connectToHost("127.0.0.1", port);
    EXPECT_TRUE(socket.waitForConnected(LimitMs));
    if (port == server.port()) {
        socket.startClientEncryption();
        EXPECT_TRUE(socket.waitForEncrypted(LimitMs)) << socket.errorString().toStdString();
    }
    socket.write(QByteArray("GET ") + path + " HTTP/1.1\r\nHost: here:1\r\n\r\n");
    QByteArray all;
    while (socket.waitForReadyRead(LimitMs))
        all += socket.readAll();
    const qsizetype end = all.indexOf("\r\n\r\n");
    return {all.left(end + 2), all.mid(end + 4)};
}

TEST(PackageServer, AnswersAsAskedForAndTellsWhatItServed)
{
    PackageAnswer answer;
    answer.package = QByteArray("0123456789").repeated(20'000);
    answer.suggestedName = "../../x.zip";
    answer.extraHeaders = {"X-Mine: 1"};
    // A head that lies, with a line that is none, and a slow body that ends early.
    answer.declaredLength = qint64{1} << 40;
    answer.garbageHeaders = true;
    answer.cutAt = 100'000;
    answer.bytesPerSecond = 400'000;
    PackageServer server(answer);
    QString problem;
    ASSERT_TRUE(server.start(&problem)) << problem.toStdString();
    QElapsedTimer time;
    time.start();
    const auto [head, body] = ask(server, server.port());
    EXPECT_GE(time.elapsed(), 240);
    EXPECT_TRUE(head.startsWith("HTTP/1.1 200 OK\r\n"));
    for (const char *line : {"Content-Length: 1099511627776", "X-Mine: 1", "this line has no colon",
                             "Content-Disposition: attachment; filename=\"../../x.zip\""})
        EXPECT_TRUE(head.contains(QByteArray("\r\n") + line + "\r\n")) << line;
    EXPECT_EQ(body, answer.package.first(100'000));
    ASSERT_TRUE(server.waitForEnds(1, 5s));
    const ServedRequest served = server.report().requests.front();
    EXPECT_EQ(served.target, "/software/VornUpdate2.zip");
    EXPECT_EQ(served.status, 200);
    EXPECT_EQ(served.bodyBytes, 100'000);
    EXPECT_EQ(served.end, ServedRequest::End::Complete);
    EXPECT_TRUE(
        ask(server, server.port(), "/other").first.startsWith("HTTP/1.1 404 Not Found\r\n"));

    PackageAnswer away; // from TLS
    away.package = answer.package;
    away.redirectTo = "http";
    ASSERT_TRUE(server.setAnswer(away));
    const QByteArray target =
        "http://here:" + QByteArray::number(server.plainPort()) + "/software/VornUpdate2.zip";
    EXPECT_TRUE(ask(server, server.port()).first.contains("\r\nLocation: " + target + "\r\n"));
    EXPECT_EQ(server.report().plainConnections, 0);
    EXPECT_EQ(ask(server, server.plainPort()).second, answer.package);
    EXPECT_EQ(server.report().plainConnections, 1);
}

} // namespace
} // namespace vorn::test
