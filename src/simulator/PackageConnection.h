#pragma once

#include "simulator/PackageAnswer.h"
#include "simulator/PackageReport.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSslSocket>
#include <QTimer>

#include <memory>

namespace vorn {

// A connection to the package server: takes one request and sends the reply to it, with the faults
// that the reply is to have. It deletes itself when the connection has ended.
class PackageConnection : public QObject
{
public:
    // Takes over a connected socket; `secure` when it uses TLS. The state must outlive the object.
    PackageConnection(std::unique_ptr<QSslSocket> socket, bool secure, PackageServerState &state,
                      QObject *parent);

private:
    void readRequest();
    void begin(const PackageRequest &request);
    void pump();
    qint64 bodyEnd() const; // the length of body to send
    qint64 backlog() const; // bytes that the system has not taken yet
    void sendPiece(qint64 count);
    void finish();
    void endConnection(bool cut);
    void handleDisconnect();
    ServedRequest &request() const { return m_state.report.requests[*m_request]; }

    QSslSocket *const m_socket;
    const bool m_secure;
    PackageServerState &m_state;
    QByteArray m_requestBlock;
    std::optional<qsizetype> m_request; // in the report
    PackageReply m_reply;
    qint64 m_sent = 0; // of the body
    bool m_sending = false;
    QElapsedTimer m_bodyTime;
    QTimer m_tick;
};

} // namespace vorn
