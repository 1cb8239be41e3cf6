#pragma once

#include "simulator/PackageAnswer.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>

#include <condition_variable>
#include <mutex>

namespace vorn {

// A request that the package server received, and how far its reply got.
struct ServedRequest
{
    enum class End {
        Running,  // the reply is being sent (or the server keeps silent)
        Complete, // everything that was to be sent has been
        Abandoned // the client left before that
    };
    QByteArray method;
    QByteArray target;
    bool secure = true;   // over TLS
    int status = 0;       // 0: not answered
    qint64 bodyBytes = 0; // handed to the connection; the client may have taken less
    End end = End::Running;
};

// What the package server has seen so far. A value, safe to keep and to pass on.
struct PackageServerReport
{
    int connections = 0;      // to the TLS port
    int plainConnections = 0; // to the port without TLS
    QList<ServedRequest> requests;

    QJsonObject toJson() const;
};

// What the server's thread shares with its callers.
struct PackageServerState
{
    std::mutex mutex; // guards all that follows
    std::condition_variable changed;
    PackageAnswer answer;
    PackageServerReport report;

    // Changes the report by change(report).
    template <typename Change>
    void note(Change change)
    {
        {
            const std::lock_guard lock(mutex);
            change(report);
        }
        changed.notify_all();
    }
};

} // namespace vorn
