#include "simulator/PackageConnection.h"

#include <algorithm>
#include <limits>

namespace vorn {

namespace {

constexpr qsizetype kMaxRequest = qsizetype{64} * 1024;

// Little is buffered here: what the client does not take stays unsent, so that a client that leaves
// early can be told from one that has everything.
constexpr qint64 kMaxBacklog = qint64{32} * 1024;
constexpr qint64 kMaxPiece = qint64{16} * 1024;
constexpr int kTickMs = 10; // of a slow body

} // namespace

PackageConnection::PackageConnection(std::unique_ptr<QSslSocket> socket, bool secure,
                                     PackageServerState &state, QObject *parent)
    : QObject(parent), m_socket(socket.release()), m_secure(secure), m_state(state)
{
    m_socket->setParent(this);
    connect(m_socket, &QSslSocket::readyRead, this, &PackageConnection::readRequest);
    connect(m_socket, &QSslSocket::bytesWritten, this, &PackageConnection::pump);
    connect(m_socket, &QSslSocket::encryptedBytesWritten, this, &PackageConnection::pump);
    connect(m_socket, &QSslSocket::disconnected, this, &PackageConnection::handleDisconnect);
    connect(&m_tick, &QTimer::timeout, this, &PackageConnection::pump);
}

void PackageConnection::readRequest()
{
    m_requestBlock += m_socket->readAll();
    if (m_request)
        return;
    const qsizetype end = m_requestBlock.indexOf("\r\n\r\n");
    if (end < 0 && m_requestBlock.size() <= kMaxRequest)
        return;
    const std::optional<PackageRequest> request = parseRequest(m_requestBlock.left(end + 4));
    if (end < 0 || !request)
        endConnection(true);
    else
        begin(*request);
}

void PackageConnection::begin(const PackageRequest &request)
{
    const bool silent = m_state.answer.silence != ServerSilence::None;
    m_reply = makeReply(m_state.answer, request, m_secure, m_state.plainPort);
    m_request = m_state.report.requests.size();
    m_state.report.requests.append(
        {request.method, request.target, m_secure, silent ? 0 : m_reply.status});
    if (silent)
        return;
    m_socket->write(m_reply.head);
    QTimer::singleShot(m_reply.how.bodyPause, this, [this] {
        m_sending = true;
        m_bodyTime.start();
        if (m_reply.how.bytesPerSecond > 0)
            m_tick.start(kTickMs);
        pump();
    });
}

qint64 PackageConnection::backlog() const
{
    return m_socket->bytesToWrite() + m_socket->encryptedBytesToWrite();
}

qint64 PackageConnection::bodyEnd() const
{
    const PackageAnswer &how = m_reply.how;
    const qint64 whole = how.endless ? std::numeric_limits<qint64>::max() : m_reply.body.size();
    return std::min(whole, how.cutAt.value_or(how.truncateAt.value_or(whole)));
}

void PackageConnection::pump()
{
    while (m_sending && m_sent < bodyEnd() && backlog() < kMaxBacklog) {
        qint64 count = std::min(bodyEnd() - m_sent, kMaxPiece);
        if (m_reply.how.bytesPerSecond > 0) {
            const qint64 due = m_bodyTime.elapsed() * m_reply.how.bytesPerSecond / 1000;
            count = std::min(count, due - m_sent);
            if (count <= 0)
                return; // the timer calls again
        }
        sendPiece(count);
    }
    if (m_sending && m_sent == bodyEnd())
        finish();
}

void PackageConnection::sendPiece(qint64 count)
{
    const qint64 offset = m_sent % m_reply.body.size();
    const QByteArray piece = m_reply.body.mid(offset, count);
    if (m_reply.how.framing == BodyFraming::Chunked)
        m_socket->write(QByteArray::number(piece.size(), 16) + "\r\n" + piece + "\r\n");
    else
        m_socket->write(piece);
    m_sent += piece.size();
    request().bodyBytes += piece.size();
}

void PackageConnection::finish()
{
    if (m_reply.how.framing == BodyFraming::Chunked && m_sent == m_reply.body.size()) {
        m_reply.how.framing = BodyFraming::UntilClose; // the last chunk is sent once
        m_socket->write("0\r\n\r\n");
    }
    if (backlog() > 0)
        return; // called again when some of it is written
    m_sending = false;
    m_tick.stop();
    request().end = ServedRequest::End::Complete;
    endConnection(m_reply.how.cutAt.has_value());
}

void PackageConnection::endConnection(bool cut)
{
    // Later, since the socket may be calling this from within its own work.
    QTimer::singleShot(0, this, [this, cut] {
        if (cut)
            m_socket->abort(); // without closing TLS
        else
            m_socket->disconnectFromHost();
    });
}

void PackageConnection::handleDisconnect()
{
    if (m_request && request().end == ServedRequest::End::Running)
        request().end = ServedRequest::End::Abandoned;
    m_sending = false;
    deleteLater();
}

} // namespace vorn
