#include "simulator/PackageServer.h"

#include "simulator/PackageConnection.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QJsonArray>
#include <QSocketNotifier>
#include <QSslConfiguration>
#include <QSslKey>
#include <QTcpServer>

#include <algorithm>
#include <memory>
#include <utility>

namespace vorn {

namespace {

QString nameOf(ServedRequest::End end)
{
    switch (end) {
    case ServedRequest::End::Running:
        return QStringLiteral("running");
    case ServedRequest::End::Complete:
        return QStringLiteral("complete");
    case ServedRequest::End::Abandoned:
        return QStringLiteral("abandoned");
    }
    return {};
}

// The port without TLS.
class PlainListener : public QTcpServer
{
public:
    explicit PlainListener(PackageServerState &state) : m_state(state) {}

protected:
    void incomingConnection(qintptr descriptor) override
    {
        m_state.note([](PackageServerReport &report) { ++report.plainConnections; });
        auto socket = std::make_unique<QSslSocket>();
        if (socket->setSocketDescriptor(descriptor))
            new PackageConnection(std::move(socket), false, 0, m_state, this);
    }

private:
    PackageServerState &m_state;
};

// The port with TLS.
class TlsListener : public QTcpServer
{
public:
    TlsListener(const ServerCertificate &certificate, quint16 plainPort, PackageServerState &state)
        : m_plainPort(plainPort), m_state(state)
    {
        m_configuration.setLocalCertificate(QSslCertificate(certificate.certificate));
        m_configuration.setPrivateKey(QSslKey(certificate.key, QSsl::Ec));
        m_configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    }

protected:
    void incomingConnection(qintptr descriptor) override
    {
        bool isSilent = false;
        m_state.note([&](PackageServerReport &report) {
            ++report.connections;
            isSilent = m_state.answer.silence == ServerSilence::Handshake;
        });
        auto socket = std::make_unique<QSslSocket>();
        if (!socket->setSocketDescriptor(descriptor))
            return;
        if (isSilent) {
            connect(socket.get(), &QSslSocket::disconnected, socket.get(), &QObject::deleteLater);
            socket.release()->setParent(this);
            return;
        }
        socket->setSslConfiguration(m_configuration);
        socket->startServerEncryption();
        new PackageConnection(std::move(socket), true, m_plainPort, m_state, this);
    }

private:
    QSslConfiguration m_configuration = QSslConfiguration::defaultConfiguration();
    const quint16 m_plainPort;
    PackageServerState &m_state;
};

} // namespace

QJsonObject PackageServerReport::toJson() const
{
    QJsonArray list;
    for (const ServedRequest &request : requests) {
        list.append(QJsonObject{
            {QStringLiteral("method"), QString::fromLatin1(request.method)},
            {QStringLiteral("target"), QString::fromLatin1(request.target)},
            {QStringLiteral("secure"), request.secure},
            {QStringLiteral("status"), request.status},
            {QStringLiteral("bodyBytes"), request.bodyBytes},
            {QStringLiteral("end"), nameOf(request.end)},
        });
    }
    return {{QStringLiteral("connections"), connections},
            {QStringLiteral("plainConnections"), plainConnections},
            {QStringLiteral("requests"), list}};
}

PackageServer::PackageServer(PackageAnswer answer, CertificateKind certificate)
    : m_kind(certificate)
{
    m_state.answer = std::move(answer);
}

PackageServer::~PackageServer()
{
    if (!m_thread.joinable())
        return;
    m_stop.set();
    m_thread.join();
}

bool PackageServer::start(QString *problem, quint16 port)
{
    QString why;
    if (prepare(&why)) {
        m_thread = std::thread([this, port] { run(port); });
        std::unique_lock lock(m_state.mutex);
        m_state.changed.wait(lock, [this] { return m_settled; });
        why = m_problem;
    }
    if (problem != nullptr)
        *problem = why;
    return why.isEmpty();
}

bool PackageServer::prepare(QString *problem)
{
    *problem = packageAnswerProblem(m_state.answer);
    if (!problem->isEmpty())
        return false;
    const std::optional<ServerCertificate> made = makeServerCertificate(m_kind, problem);
    if (!made)
        return false;
    m_certificate = *made;
    if (m_authorityFile.open() && m_authorityFile.write(m_certificate.authority) > 0 &&
        m_authorityFile.flush())
        return true;
    *problem = m_authorityFile.errorString();
    return false;
}

void PackageServer::settle(const QString &problem)
{
    m_state.note([&](PackageServerReport &) {
        m_problem = problem;
        m_settled = true;
    });
}

void PackageServer::run(quint16 port)
{
    QEventLoop loop; // before the sockets: it makes this thread's event dispatcher
    PlainListener plain(m_state);
    if (!plain.listen(QHostAddress::LocalHost)) {
        settle(plain.errorString());
        return;
    }
    TlsListener tls(m_certificate, plain.serverPort(), m_state);
    if (!tls.listen(QHostAddress::LocalHost, port)) {
        settle(tls.errorString());
        return;
    }
    m_plainPort = plain.serverPort();
    m_port = tls.serverPort();
    const QSocketNotifier stop(m_stop.descriptor(), QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    settle({});
    loop.exec();
}

QString PackageServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_port);
}

bool PackageServer::setAnswer(PackageAnswer answer)
{
    if (!packageAnswerProblem(answer).isEmpty())
        return false;
    const std::lock_guard lock(m_state.mutex);
    m_state.answer = std::move(answer);
    return true;
}

PackageServerReport PackageServer::report() const
{
    const std::lock_guard lock(m_state.mutex);
    PackageServerReport copy = m_state.report;
    // Deep copies, so that threads share no memory but under the lock.
    for (ServedRequest &request : copy.requests) {
        request.method.detach();
        request.target.detach();
    }
    return copy;
}

bool PackageServer::waitForEnds(qsizetype count, std::chrono::milliseconds limit) const
{
    const auto ended = [](const ServedRequest &request) {
        return request.end != ServedRequest::End::Running;
    };
    std::unique_lock lock(m_state.mutex);
    return m_state.changed.wait_for(lock, limit, [&] {
        const QList<ServedRequest> &requests = m_state.report.requests;
        return std::count_if(requests.cbegin(), requests.cend(), ended) >= count;
    });
}

} // namespace vorn
