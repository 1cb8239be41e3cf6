#pragma once

#include "platform/WakeEvent.h"
#include "simulator/PackageAnswer.h"
#include "simulator/PackageServerReport.h"
#include "simulator/ServerCertificate.h"

#include <QString>
#include <QTemporaryFile>

#include <chrono>
#include <thread>

namespace vorn {

// An HTTPS server for firmware packages on 127.0.0.1, with a certificate of its own. It runs on a
// thread of its own, so a busy program around it never slows it down. A second port speaks plain
// HTTP, so that the report shows when a client follows a redirect there, which it should not.
//
// Every method may be called from any thread once start() has succeeded.
class PackageServer
{
public:
    explicit PackageServer(PackageAnswer answer,
                           CertificateKind certificate = CertificateKind::Good);
    ~PackageServer(); // breaks all connections
    PackageServer(const PackageServer &) = delete;
    PackageServer &operator=(const PackageServer &) = delete;

    // Listens on the port, or on a free one when it is 0; call it once. False, with the reason in
    // *problem, when the answer is invalid, the port is taken or no certificate can be made.
    [[nodiscard]] bool start(QString *problem = nullptr, quint16 port = 0);

    quint16 port() const { return m_port; }
    quint16 plainPort() const { return m_plainPort; }
    QString host() const; // "127.0.0.1:PORT", the port with TLS
    // The authority to trust, in PEM, and a file with it that lives as long as the server.
    const QByteArray &authority() const { return m_certificate.authority; }
    QString authorityFile() const { return m_authorityFile.fileName(); }

    // Answers the requests to come in this way. False, and nothing changes, when it is invalid.
    bool setAnswer(PackageAnswer answer);

    PackageServerReport report() const;
    // Waits until so many replies have ended, complete or abandoned; false when the limit passes
    // first.
    bool waitForEnds(qsizetype count, std::chrono::milliseconds limit) const;

private:
    bool prepare(QString *problem);
    void run(quint16 port);
    void settle(const QString &problem);

    const CertificateKind m_kind;
    ServerCertificate m_certificate;
    QTemporaryFile m_authorityFile;
    const WakeEvent m_stop;
    mutable PackageServerState m_state;
    // These are written by the server's thread until it has settled.
    bool m_settled = false;
    QString m_problem;
    quint16 m_port = 0;
    quint16 m_plainPort = 0;
    std::thread m_thread;
};

} // namespace vorn
