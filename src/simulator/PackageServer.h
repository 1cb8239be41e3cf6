#pragma once

#include "simulator/PackageServerOptions.h"
#include "simulator/PackageServerReport.h"
#include "simulator/ServerCertificate.h"

#include <QString>

#include <chrono>
#include <memory>

class QTemporaryFile;

namespace vorn {

class PackageServerLog;
class PackageServerThread;

// An HTTPS server for firmware packages on 127.0.0.1, with a certificate made at its start and a
// thread of its own, so that a busy program around it never slows it. A second port speaks plain
// HTTP: a client that is redirected there and goes has trusted too much, and the report shows it.
//
// Every method may be called from any thread once start() has returned.
class PackageServer
{
public:
    explicit PackageServer(PackageAnswer answer,
                           CertificateKind certificate = CertificateKind::Good);
    ~PackageServer(); // breaks what is still running
    PackageServer(const PackageServer &) = delete;
    PackageServer &operator=(const PackageServer &) = delete;

    // Listens on the port, or on a free one when it is 0; once. False, with the reason in
    // *problem, when the answer makes no sense, the port is taken or there is no certificate.
    [[nodiscard]] bool start(QString *problem = nullptr, quint16 port = 0);

    quint16 port() const;
    quint16 plainPort() const;
    QString host() const; // "127.0.0.1:PORT"
    // The authority to trust, in PEM, and a file with it that lives as long as the server.
    const QByteArray &authority() const;
    QString authorityFile() const;

    // Answers later requests so; a request that is being answered keeps its answer. False, and
    // nothing changes, when the answer makes no sense.
    bool setAnswer(PackageAnswer answer);

    PackageServerReport report() const;
    // Each waits for its condition, and says whether it held within the time: so many requests
    // have arrived; so many replies have ended, complete or abandoned.
    bool waitForRequests(int count, std::chrono::milliseconds limit) const;
    bool waitForEnds(int count, std::chrono::milliseconds limit) const;

private:
    QString m_problem; // with the answer
    CertificateKind m_kind;
    ServerCertificate m_certificate;
    std::unique_ptr<QTemporaryFile> m_authorityFile;
    std::unique_ptr<PackageServerLog> m_log;
    std::unique_ptr<PackageServerThread> m_thread;
};

} // namespace vorn
