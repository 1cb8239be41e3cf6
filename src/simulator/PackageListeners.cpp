#include "simulator/PackageListeners.h"

#include <QSslSocket>

#include <memory>
#include <utility>

namespace vorn {

TlsListener::TlsListener(quint16 plainPort, PackageConnection::AnswerSource answer,
                         PackageServerLog &log)
    : m_answer(std::move(answer)), m_log(log)
{
    connect(this, &QTcpServer::pendingConnectionAvailable, this, [this, plainPort] {
        while (QTcpSocket *socket = nextPendingConnection())
            new PackageConnection(socket, true, plainPort, m_answer, m_log, this);
    });
}

void TlsListener::incomingConnection(qintptr descriptor)
{
    m_log.connected(true);
    if (m_answer().silence != ServerSilence::Handshake) {
        QSslServer::incomingConnection(descriptor);
        return;
    }
    auto socket = std::make_unique<QTcpSocket>();
    if (!socket->setSocketDescriptor(descriptor))
        return;
    connect(socket.get(), &QTcpSocket::disconnected, socket.get(), &QObject::deleteLater);
    socket.release()->setParent(this);
}

PlainListener::PlainListener(PackageConnection::AnswerSource answer, PackageServerLog &log)
{
    connect(this, &QTcpServer::pendingConnectionAvailable, this,
            [this, answer = std::move(answer), &log] {
                while (QTcpSocket *socket = nextPendingConnection()) {
                    log.connected(false);
                    new PackageConnection(socket, false, 0, answer, log, this);
                }
            });
}

} // namespace vorn
