#include "simulator/PackageServer.h"

#include "simulator/PackageConnection.h"

#include <QHostAddress>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTcpServer>

#include <optional>
#include <utility>

namespace vorn {

namespace {

// One of the server's ports; with TLS when it has a configuration for it.
class Listener : public QTcpServer
{
public:
    explicit Listener(PackageServerState &state, std::optional<QSslConfiguration> tls = {})
        : m_state(state), m_tls(std::move(tls))
    {
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        ++(m_tls ? m_state.report.connections : m_state.report.plainConnections);
        auto socket = std::make_unique<QSslSocket>();
        if (!socket->setSocketDescriptor(descriptor))
            return;
        if (m_tls && m_state.answer.silence != ServerSilence::Handshake) {
            socket->setSslConfiguration(*m_tls);
            socket->startServerEncryption();
        }
        new PackageConnection(std::move(socket), m_tls.has_value(), m_state, this);
    }

private:
    PackageServerState &m_state;
    const std::optional<QSslConfiguration> m_tls;
};

} // namespace

PackageServer::PackageServer(PackageAnswer answer, CertificateKind certificate)
    : m_kind(certificate), m_state{.answer = std::move(answer)}
{
}

PackageServer::~PackageServer() = default;

bool PackageServer::start(QString *problem, quint16 port)
{
    const auto fail = [problem](const QString &why) {
        if (problem != nullptr)
            *problem = why;
        return false;
    };
    QString why;
    const std::optional<ServerCertificate> made = makeServerCertificate(m_kind, &why);
    if (!made)
        return fail(why);
    m_certificate = *made;
    if (!m_authorityFile.open() || m_authorityFile.write(authority()) < 0 ||
        !m_authorityFile.flush())
        return fail(m_authorityFile.errorString());

    m_plain = std::make_unique<Listener>(m_state);
    if (!m_plain->listen(QHostAddress::LocalHost))
        return fail(m_plain->errorString());
    m_state.plainPort = m_plain->serverPort();
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setLocalCertificate(QSslCertificate(m_certificate.certificate));
    tls.setPrivateKey(QSslKey(m_certificate.key, QSsl::Ec));
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    m_tls = std::make_unique<Listener>(m_state, tls);
    return m_tls->listen(QHostAddress::LocalHost, port) || fail(m_tls->errorString());
}

QString PackageServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_tls->serverPort());
}

} // namespace vorn
