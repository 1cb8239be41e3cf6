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

// What becomes of one transfer. Called on the main thread; always ends with
// URLSessionTaskDidCompleteWithError, in which the session may not be destroyed.
class UrlSessionDelegate
{
public:
    enum class Disposition { Allow, Cancel };

    // The headers are there; the answer says whether the body is wanted.
    virtual Disposition URLSessionDataTaskDidReceiveResponse(UrlSession &session,
                                                             const UrlResponse &response) = 0;
    // One piece of the body.
    virtual void URLSessionDataTaskDidReceiveData(UrlSession &session, const QByteArray &piece) = 0;
    // The end, with an error or none. An HTTP status is no error.
    virtual void URLSessionTaskDidCompleteWithError(UrlSession &session,
                                                    const PackageProblem &error) = 0;

protected:
    virtual ~UrlSessionDelegate() = default;
};

// One transfer from the package server over HTTPS: certificates are always checked, redirects are
// followed unless they lead away from HTTPS, and a transfer that stands still is given up.
class UrlSession : public QObject
{
    Q_OBJECT

public:
    // `timeout`: how long the transfer may go without a byte, the way to the server included.
    UrlSession(UrlSessionDelegate &delegate, std::chrono::milliseconds timeout);
    // Ends the transfer without a word.
    ~UrlSession() override;

    // Starts the transfer. A location that is not configured fails, from the event loop.
    void resume(QNetworkAccessManager &network, const PackageLocation &location);
    // Ends the transfer now, with the error Cancelled.
    void cancel();

private:
    void receiveResponse();
    void receiveData();
    void finish();
    void complete(const PackageProblem &error);
    PackageProblem replyProblem() const;

    UrlSessionDelegate &m_delegate;
    QPointer<QNetworkReply> m_reply; // belongs to the network
    QTimer m_timeout;
    PackageProblem m_ownProblem;  // why this side ended the transfer
    PackageProblem m_certificate; // what was wrong with the server's certificate
    qint64 m_expected = 0;
    qint64 m_received = 0;
    bool m_hasResponse = false;
    bool m_isComplete = false;
};

} // namespace vorn
