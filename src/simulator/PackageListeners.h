#pragma once

#include "simulator/PackageConnection.h"

#include <QSslServer>
#include <QTcpServer>

namespace vorn {

// The port with TLS. Every connection that finishes its handshake becomes a PackageConnection.
class TlsListener : public QSslServer
{
    Q_OBJECT

public:
    // The log must outlive the listener.
    TlsListener(quint16 plainPort, PackageConnection::AnswerSource answer, PackageServerLog &log);

protected:
    void incomingConnection(qintptr descriptor) override;

private:
    PackageConnection::AnswerSource m_answer;
    PackageServerLog &m_log;
};

// The port without TLS.
class PlainListener : public QTcpServer
{
    Q_OBJECT

public:
    // The log must outlive the listener.
    PlainListener(PackageConnection::AnswerSource answer, PackageServerLog &log);
};

} // namespace vorn
