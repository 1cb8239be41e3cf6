#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>

namespace vorn {

// One request that the package server received, and how far its reply got.
struct ServedRequest
{
    enum class End {
        Running,  // the reply is on its way (or a silent server lets the client wait)
        Complete, // sent as far as it was to be
        Abandoned // the client went before that
    };
    QByteArray method;
    QByteArray target;
    bool secure = true;   // over TLS
    int status = 0;       // 0: not answered
    qint64 bodyBytes = 0; // given to the connection; what the client took may be less
    End end = End::Running;
};

// What the package server has seen so far. A value: safe to keep and to hand on.
struct PackageServerReport
{
    int connections = 0;      // that reached the TLS port
    int plainConnections = 0; // that reached the port without TLS
    QList<ServedRequest> requests;

    QJsonObject toJson() const;
};

} // namespace vorn
