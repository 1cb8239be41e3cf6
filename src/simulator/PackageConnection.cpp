#include "simulator/PackageConnection.h"

#include <QSslSocket>

#include <algorithm>
#include <limits>
#include <utility>

namespace vorn {

namespace {

constexpr qsizetype MaxRequest = qsizetype{64} * 1024;

// Little waits in the program: what the client does not take stays unsent, so that a client that
// goes away is told from one that has it all.
constexpr qint64 MaxBacklog = qint64{32} * 1024;
constexpr qint64 MaxPiece = qint64{16} * 1024;
constexpr int TickMs = 10; // of a slow body

} // namespace

PackageConnection::PackageConnection(QTcpSocket *socket, bool secure, quint16 plainPort,
                                     AnswerSource answer, PackageServerLog &log, QObject *parent)
    : QObject(parent), m_socket(socket), m_secure(secure), m_plainPort(plainPort),
      m_answer(std::move(answer)), m_log(log)
{
    m_socket->setParent(this);
    connect(m_socket, &QTcpSocket::readyRead, this, &PackageConnection::readRequest);
    connect(m_socket, &QTcpSocket::bytesWritten, this, &PackageConnection::pump);
    if (auto *tls = qobject_cast<QSslSocket *>(m_socket))
        connect(tls, &QSslSocket::encryptedBytesWritten, this, &PackageConnection::pump);
    connect(m_socket, &QTcpSocket::disconnected, this, &PackageConnection::handleDisconnect);
    connect(&m_tick, &QTimer::timeout, this, &PackageConnection::pump);
    readRequest();
}

void PackageConnection::readRequest()
{
    m_requestBlock += m_socket->readAll();
    if (m_request >= 0)
        return;
    const qsizetype end = m_requestBlock.indexOf("\r\n\r\n");
    if (end < 0 && m_requestBlock.size() <= MaxRequest)
        return;
    const std::optional<PackageRequest> request = parseRequest(m_requestBlock.left(end + 4));
    if (end < 0 || !request)
        endConnection(true);
    else
        begin(*request);
}

void PackageConnection::begin(const PackageRequest &request)
{
    const PackageAnswer answer = m_answer();
    const bool silent = answer.silence != ServerSilence::None;
    m_reply = makeReply(answer, request, m_secure, m_plainPort);
    m_request =
        m_log.began({request.method, request.target, m_secure, silent ? 0 : m_reply.status, 0, {}});
    if (silent)
        return;
    m_socket->write(m_reply.head);
    QTimer::singleShot(m_reply.bodyPause, this, [this] {
        m_sending = true;
        m_bodyTime.start();
        if (m_reply.bytesPerSecond > 0)
            m_tick.start(TickMs);
        pump();
    });
}

qint64 PackageConnection::backlog() const
{
    const auto *tls = qobject_cast<const QSslSocket *>(m_socket);
    return m_socket->bytesToWrite() + (tls != nullptr ? tls->encryptedBytesToWrite() : 0);
}

qint64 PackageConnection::bodyEnd() const
{
    const qint64 whole = m_reply.endless ? std::numeric_limits<qint64>::max() : m_reply.body.size();
    return std::min(whole, m_reply.stopAfter.value_or(whole));
}

void PackageConnection::pump()
{
    while (m_sending && m_sent < bodyEnd() && backlog() < MaxBacklog) {
        qint64 count = std::min(bodyEnd() - m_sent, MaxPiece);
        if (m_reply.bytesPerSecond > 0) {
            const qint64 due = m_bodyTime.elapsed() * m_reply.bytesPerSecond / 1000;
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
    if (m_reply.chunked)
        m_socket->write(QByteArray::number(piece.size(), 16) + "\r\n" + piece + "\r\n");
    else
        m_socket->write(piece);
    m_sent += piece.size();
    m_log.sent(m_request, piece.size());
}

void PackageConnection::finish()
{
    if (m_reply.chunked && !std::exchange(m_lastChunkSent, true) && m_sent == m_reply.body.size())
        m_socket->write("0\r\n\r\n");
    if (backlog() > 0)
        return; // called again when some of it is written
    m_sending = false;
    m_tick.stop();
    m_complete = true;
    m_log.ended(m_request, ServedRequest::End::Complete);
    endConnection(m_reply.cut);
}

void PackageConnection::endConnection(bool cut)
{
    // Later: this may be a call from within the socket's own work, which cannot end it there.
    QTimer::singleShot(0, this, [this, cut] {
        if (cut)
            m_socket->abort(); // without TLS's farewell
        else
            m_socket->disconnectFromHost();
    });
}

void PackageConnection::handleDisconnect()
{
    if (m_request >= 0 && !m_complete)
        m_log.ended(m_request, ServedRequest::End::Abandoned);
    m_sending = false;
    m_tick.stop();
    deleteLater();
}

} // namespace vorn
