#include "firmware/UrlSession.h"

#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QSslError>

#include <algorithm>
#include <array>

namespace vorn {

namespace {

Q_LOGGING_CATEGORY(logFirmware, "vorn.firmware")

using Kind = PackageProblemKind;

// What Qt may hold of the body until the main thread takes it.
constexpr qint64 kReadBuffer = 4 << 20;

Kind kindOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::HostNotFoundError:
        return Kind::NameNotFound;
    case QNetworkReply::RemoteHostClosedError:
        return Kind::ConnectionLost;
    case QNetworkReply::SslHandshakeFailedError:
        return Kind::Encryption;
    case QNetworkReply::InsecureRedirectError:
        return Kind::InsecureRedirect;
    case QNetworkReply::TooManyRedirectsError:
        return Kind::Protocol;
    default:
        // Qt's numbers: below 200 network and proxy, from 200 content, protocol and server.
        return error < QNetworkReply::ContentAccessDenied ? Kind::Unreachable : Kind::Protocol;
    }
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// Qt reports a status of 400 and above as an error, even when the whole body has arrived.
bool isHttpStatusOnly(const QNetworkReply &reply)
{
    return statusOf(reply) >= 400 && reply.error() >= QNetworkReply::ContentAccessDenied &&
           reply.error() != QNetworkReply::ProtocolFailure;
}

// A redirect, which Qt follows or rejects by itself.
bool isRedirect(const QNetworkReply &reply)
{
    constexpr std::array kRedirects = {301, 302, 303, 307, 308};
    return std::count(kRedirects.begin(), kRedirects.end(), statusOf(reply)) > 0 &&
           reply.hasRawHeader("Location");
}

QNetworkRequest requestFor(const PackageLocation &location)
{
    QNetworkRequest request(location.url());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    // One connection carries one body; HTTP/2 would have nothing to multiplex.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // An archive does not compress, and Content-Length must be the length of the bytes received.
    request.setRawHeader("Accept-Encoding", "identity");
    if (!location.certificates().isEmpty()) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setCaCertificates(location.certificates());
        request.setSslConfiguration(configuration);
    }
    return request;
}

} // namespace

UrlSession::UrlSession(UrlSessionDelegate &delegate, const Timeouts &timeouts)
    : m_delegate(delegate), m_timeouts(timeouts)
{
    for (QTimer *timer : {&m_stepTimer, &m_totalTimer}) {
        timer->setSingleShot(true);
        timer->callOnTimeout(this, [this, timer] { expire(*timer); });
    }
}

UrlSession::~UrlSession()
{
    delete m_reply;
}

void UrlSession::resume(QNetworkAccessManager &network, const PackageLocation &location)
{
    const auto proxies = network.proxyFactory()->queryProxy(QNetworkProxyQuery(location.url()));
    m_hasProxy = proxies.constFirst().type() != QNetworkProxy::NoProxy;
    m_reply = network.get(requestFor(location));
    m_reply->setReadBufferSize(kReadBuffer);
    connect(m_reply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) {
        if (!errors.isEmpty())
            m_certificate = {Kind::Certificate, static_cast<int>(errors.front().error()),
                             m_reply->url().host()};
    });
    connect(m_reply, &QNetworkReply::socketStartedConnecting, this,
            [this] { m_isConnecting = true; });
    connect(m_reply, &QNetworkReply::requestSent, this, [this] {
        m_isConnected = true;
        m_stepTimer.start(m_timeouts.response);
    });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &UrlSession::receiveResponse);
    connect(m_reply, &QNetworkReply::readyRead, this, &UrlSession::receiveData);
    connect(m_reply, &QNetworkReply::finished, this, &UrlSession::finish);
    m_stepTimer.start(m_timeouts.idle);
    m_totalTimer.start(m_timeouts.total);
}

void UrlSession::expire(const QTimer &timer)
{
    m_timeout = timeoutProblem(timer);
    m_reply->abort();
    // Qt never starts its thread again if the system had none for it.
    if (!m_isConnecting)
        m_reply->manager()->clearConnectionCache();
}

PackageProblem UrlSession::timeoutProblem(const QTimer &timer) const
{
    const QString host = m_reply->url().host();
    // The name server does not answer, or a server or proxy accepts connections and no more.
    if (!m_isConnecting)
        return unreachable(QNetworkReply::TimeoutError);
    if (!m_isConnected)
        return {Kind::Encryption, static_cast<int>(QNetworkReply::TimeoutError), host};
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(timer.intervalAsDuration());
    return {&timer == &m_totalTimer ? Kind::TooSlow : Kind::TimedOut,
            static_cast<int>(seconds.count()), host};
}

// Through a proxy, only the proxy's own name is resolved here.
PackageProblem UrlSession::unreachable(QNetworkReply::NetworkError error) const
{
    return {Kind::Unreachable,
            static_cast<int>(m_hasProxy ? QNetworkReply::ProxyNotFoundError : error),
            m_reply->url().host()};
}

void UrlSession::cancel()
{
    if (m_reply && !m_isComplete)
        m_reply->abort();
}

void UrlSession::receiveResponse()
{
    m_stepTimer.start(m_timeouts.idle);
    if (m_hasResponse || statusOf(*m_reply) == 0 || isRedirect(*m_reply))
        return;
    m_hasResponse = true;
    m_expected = expectedLength(m_reply->rawHeader("Content-Length"));
    UrlResponse response{statusOf(*m_reply), m_reply->url(), m_expected, std::nullopt,
                         m_reply->rawHeader("Content-Disposition")};
    if (m_reply->hasRawHeader("Last-Modified"))
        response.lastModified = QString::fromLatin1(m_reply->rawHeader("Last-Modified"));
    if (!m_delegate.URLSessionDataTaskDidReceiveResponse(*this, response))
        cancel();
}

void UrlSession::receiveData()
{
    if (!m_hasResponse)
        return;
    m_stepTimer.start(m_timeouts.idle);
    const QByteArray piece = m_reply->readAll();
    m_received += piece.size();
    if (!piece.isEmpty())
        m_delegate.URLSessionDataTaskDidReceiveData(*this, piece);
}

void UrlSession::finish()
{
    const PackageProblem problem = replyProblem();
    if (!problem)
        receiveData();
    complete(problem);
}

void UrlSession::complete(const PackageProblem &error)
{
    if (std::exchange(m_isComplete, true))
        return;
    m_stepTimer.stop();
    m_totalTimer.stop();
    m_delegate.URLSessionTaskDidCompleteWithError(*this, error);
}

PackageProblem UrlSession::replyProblem() const
{
    if (m_timeout)
        return m_timeout;
    const QString host = m_reply->url().host();
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error != QNetworkReply::NoError && !isHttpStatusOnly(*m_reply)) {
        qCInfo(logFirmware) << "Transfer ended:" << error << m_reply->errorString();
        if (error == QNetworkReply::SslHandshakeFailedError && m_certificate)
            return m_certificate;
        if (error == QNetworkReply::HostNotFoundError && m_hasProxy)
            return unreachable(error);
        return {kindOf(error), static_cast<int>(error), host};
    }
    if (!m_hasResponse)
        return {Kind::Protocol, static_cast<int>(error), host};
    if (m_received + m_reply->bytesAvailable() < m_expected)
        return {Kind::ConnectionLost, static_cast<int>(QNetworkReply::RemoteHostClosedError), host};
    return {};
}

} // namespace vorn
