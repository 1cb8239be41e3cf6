#pragma once

#include "simulator/PackageAnswer.h"
#include "simulator/PackageReport.h"
#include "simulator/ServerCertificate.h"

#include <QString>
#include <QTemporaryFile>

#include <memory>

class QTcpServer;

namespace vorn {

// An HTTPS server for firmware packages on 127.0.0.1, with a certificate of its own. It works in
// the event loop of the thread that made it. A second port speaks plain HTTP, so that the report
// shows when a client follows a redirect there, which it should not.
class PackageServer
{
public:
    explicit PackageServer(PackageAnswer answer,
                           CertificateKind certificate = CertificateKind::Good);
    ~PackageServer(); // breaks all connections
    PackageServer(const PackageServer &) = delete;
    PackageServer &operator=(const PackageServer &) = delete;

    // Listens on the port, or on a free one when it is 0; call it once. False, with the reason in
    // *problem, when the port is taken or no certificate can be made.
    [[nodiscard]] bool start(QString *problem = nullptr, quint16 port = 0);

    quint16 plainPort() const { return m_state.plainPort; }
    QString host() const; // "127.0.0.1:PORT", the port with TLS
    // The authority to trust, in PEM, and a file with it that lives as long as the server.
    const QByteArray &authority() const { return m_certificate.authority; }
    QString authorityFile() const { return m_authorityFile.fileName(); }

    // Answers the requests to come in this way.
    void setAnswer(const PackageAnswer &answer) { m_state.answer = answer; }

    const PackageServerReport &report() const { return m_state.report; }

private:
    const CertificateKind m_kind;
    ServerCertificate m_certificate;
    QTemporaryFile m_authorityFile;
    PackageServerState m_state;
    std::unique_ptr<QTcpServer> m_plain;
    std::unique_ptr<QTcpServer> m_tls;
};

} // namespace vorn
