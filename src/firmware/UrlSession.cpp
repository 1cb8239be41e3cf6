#include "firmware/UrlSession.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QSslConfiguration>
#include <QSslError>

namespace vorn {

namespace {

using Kind = PackageProblem::Kind;

Kind kindOf(QNetworkReply::NetworkError error)
{
    switch (error) {
    case QNetworkReply::HostNotFoundError:
        return Kind::NameNotFound;
    case QNetworkReply::RemoteHostClosedError:
        return Kind::ConnectionLost;
    case QNetworkReply::TimeoutError:
        return Kind::TimedOut;
    case QNetworkReply::OperationCanceledError:
        return Kind::Cancelled;
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

// Qt reports a status of 400 and above as an error of the transfer, although the whole body came.
bool isHttpStatusOnly(const QNetworkReply &reply)
{
    return statusOf(reply) >= 400 && reply.error() >= QNetworkReply::ContentAccessDenied &&
           reply.error() != QNetworkReply::ProtocolFailure;
}

// A response that only says where to go, which Qt does, or fails.
bool isRedirect(const QNetworkReply &reply)
{
    switch (statusOf(reply)) {
    case 301:
    case 302:
    case 303:
    case 307:
    case 308:
        return reply.hasRawHeader("Location");
    default:
        return false;
    }
}

QNetworkRequest requestFor(const PackageLocation &location)
{
    QNetworkRequest request(location.url());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    // One connection carries one body: there is nothing for HTTP/2 to multiplex.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // An archive does not shrink, and the length announced is to be that of the bytes kept.
    request.setRawHeader("Accept-Encoding", "identity");
    if (!location.certificates().isEmpty()) {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        // Naming certificates ends the loading of the system's on demand, so they are named too.
        configuration.setCaCertificates(QSslConfiguration::systemCaCertificates() +
                                        location.certificates());
        request.setSslConfiguration(configuration);
    }
    return request;
}

} // namespace

UrlSession::UrlSession(UrlSessionDelegate &delegate, std::chrono::milliseconds timeout)
    : m_delegate(delegate)
{
    m_timeout.setSingleShot(true);
    m_timeout.setInterval(timeout);
    m_timeout.callOnTimeout(this, [this] {
        m_ownProblem = {
            Kind::TimedOut,
            tr("the server sent nothing for %1 s")
                .arg(std::chrono::duration<double>(m_timeout.intervalAsDuration()).count())};
        m_reply->abort();
    });
}

UrlSession::~UrlSession()
{
    delete m_reply;
}

void UrlSession::resume(QNetworkAccessManager &network, const PackageLocation &location)
{
    if (!location.isConfigured()) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                complete({Kind::NotConfigured, tr("no package server is configured")});
            },
            Qt::QueuedConnection);
        return;
    }
    m_reply = network.get(requestFor(location));
    connect(m_reply, &QNetworkReply::sslErrors, this, [this](const QList<QSslError> &errors) {
        if (!errors.isEmpty())
            m_certificate = {Kind::Certificate, errors.front().errorString(),
                             static_cast<int>(errors.front().error())};
    });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &UrlSession::receiveResponse);
    connect(m_reply, &QNetworkReply::readyRead, this, &UrlSession::receiveData);
    connect(m_reply, &QNetworkReply::finished, this, &UrlSession::finish);
    m_timeout.start();
}

void UrlSession::cancel()
{
    if (m_reply && !m_isComplete)
        m_reply->abort();
}

void UrlSession::receiveResponse()
{
    m_timeout.start();
    if (m_hasResponse || statusOf(*m_reply) == 0 || isRedirect(*m_reply))
        return;
    m_hasResponse = true;
    const UrlResponse response{
        statusOf(*m_reply), m_reply->url(), m_reply->rawHeader("Content-Length"),
        m_reply->rawHeader("Last-Modified"), m_reply->rawHeader("Content-Disposition")};
    m_expected = expectedLength(response.contentLength);
    const auto answer = m_delegate.URLSessionDataTaskDidReceiveResponse(*this, response);
    if (answer == UrlSessionDelegate::Disposition::Cancel)
        cancel();
}

void UrlSession::receiveData()
{
    if (!m_hasResponse)
        return;
    m_timeout.start();
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
    m_timeout.stop();
    m_delegate.URLSessionTaskDidCompleteWithError(*this, error);
}

PackageProblem UrlSession::replyProblem() const
{
    if (m_ownProblem)
        return m_ownProblem;
    const QNetworkReply::NetworkError error = m_reply->error();
    if (error != QNetworkReply::NoError && !isHttpStatusOnly(*m_reply)) {
        if (error == QNetworkReply::SslHandshakeFailedError && m_certificate)
            return m_certificate;
        return {kindOf(error), m_reply->errorString(), static_cast<int>(error)};
    }
    if (!m_hasResponse)
        return {Kind::Protocol, tr("the server's answer makes no sense"), static_cast<int>(error)};
    if (m_received + m_reply->bytesAvailable() < m_expected)
        return {Kind::ConnectionLost, tr("the connection ended before the whole package was there"),
                static_cast<int>(QNetworkReply::RemoteHostClosedError)};
    return {};
}

} // namespace vorn
