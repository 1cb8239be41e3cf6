#pragma once

#include "firmware/PackageLocation.h"
#include "firmware/PackageProblem.h"
#include "firmware/ResponseHeaders.h"

#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>

class QNetworkAccessManager;

namespace vorn {

class UrlSession;

// Follows one transfer. Called on the main thread; the last call is
// URLSessionTaskDidCompleteWithError, in which the session may not be destroyed.
class UrlSessionDelegate
{
public:
    // The headers are here; false: the body is not wanted, and the transfer is to be cancelled.
    virtual bool URLSessionDataTaskDidReceiveResponse(UrlSession &session,
                                                      const UrlResponse &response) = 0;
    // One piece of the body.
    virtual void URLSessionDataTaskDidReceiveData(UrlSession &session, const QByteArray &piece) = 0;
    // The transfer has ended, with or without an error. An HTTP status is no error.
    virtual void URLSessionTaskDidCompleteWithError(UrlSession &session,
                                                    const PackageProblem &error) = 0;

protected:
    virtual ~UrlSessionDelegate() = default;
};

// One transfer from the package server over HTTPS: certificates are always checked, redirects are
// followed unless they lead away from HTTPS.
class UrlSession : public QObject
{
    Q_OBJECT

public:
    // Exceeding any of them ends the transfer.
    struct Timeouts
    {
        // While connecting, and between two pieces of the body: the usual limit of HTTP clients.
        std::chrono::milliseconds idle{60'000};
        // From the request to the end of the response's headers.
        std::chrono::milliseconds response{5'000};
        // From start to end. The largest known package (60 MB) takes this long at 17 kB/s.
        std::chrono::milliseconds total{3'600'000};
    };

    UrlSession(UrlSessionDelegate &delegate, const Timeouts &timeouts);
    // Aborts the transfer without calling the delegate.
    ~UrlSession() override;

    // Starts the transfer.
    void resume(QNetworkAccessManager &network, const PackageLocation &location);
    // Aborts the transfer.
    void cancel();

private:
    void receiveResponse();
    void receiveData();
    void finish();
    void complete(const PackageProblem &error);
    PackageProblem replyProblem() const;
    PackageProblem timeoutProblem(const QTimer &timer) const;
    PackageProblem unreachable(QNetworkReply::NetworkError error) const;
    void expire(const QTimer &timer);

    UrlSessionDelegate &m_delegate;
    const Timeouts m_timeouts;
    QPointer<QNetworkReply> m_reply; // owned by the network
    QTimer m_stepTimer;
    QTimer m_totalTimer;
    PackageProblem m_timeout;
    PackageProblem m_certificate; // what is wrong with the server's certificate
    qint64 m_expected = 0;
    qint64 m_received = 0;
    bool m_hasProxy = false;
    bool m_isConnecting = false; // the name of the server or proxy is resolved
    bool m_isConnected = false;  // with TLS
    bool m_hasResponse = false;
    bool m_isComplete = false;
};

} // namespace vorn
