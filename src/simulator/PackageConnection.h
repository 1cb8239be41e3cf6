#pragma once

#include "simulator/PackageReply.h"
#include "simulator/PackageServerLog.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <functional>

namespace vorn {

// One connection to the package server: takes one request and sends its reply, with the faults that
// the reply is to have. Deletes itself when the connection has ended. Lives on the server's thread.
class PackageConnection : public QObject
{
    Q_OBJECT

public:
    using AnswerSource = std::function<PackageAnswer()>;

    // Takes the socket over. The answer is asked for when the request is there; the log must
    // outlive the connection.
    PackageConnection(QTcpSocket *socket, bool secure, quint16 plainPort, AnswerSource answer,
                      PackageServerLog &log, QObject *parent);

private:
    void readRequest();
    void begin(const PackageRequest &request);
    void pump();
    qint64 bodyEnd() const; // how many bytes of body there are to send
    qint64 backlog() const; // bytes that the system has not taken yet
    void sendPiece(qint64 count);
    void finish();
    void endConnection(bool cut);
    void handleDisconnect();

    QTcpSocket *m_socket;
    bool m_secure;
    quint16 m_plainPort;
    AnswerSource m_answer;
    PackageServerLog &m_log;
    QByteArray m_requestBlock;
    qsizetype m_request = -1; // in the log
    PackageReply m_reply;
    qint64 m_sent = 0; // of the body
    bool m_sending = false;
    bool m_lastChunkSent = false;
    bool m_complete = false;
    QElapsedTimer m_bodyTime;
    QTimer m_tick;
};

} // namespace vorn
