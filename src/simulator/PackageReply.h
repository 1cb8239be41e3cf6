#pragma once

#include "simulator/PackageAnswer.h"

#include <QByteArray>

#include <chrono>
#include <optional>

namespace vorn {

// What a client asked for.
struct PackageRequest
{
    QByteArray method;
    QByteArray target;
    QByteArray host; // the Host header; empty when there is none
};

// Parses a request's header block. Null when its first line is not an HTTP request line.
std::optional<PackageRequest> parseRequest(const QByteArray &block);

// A reply, ready to be sent.
struct PackageReply
{
    int status = 200;
    QByteArray head; // status line and headers, with the empty line
    QByteArray body;
    bool chunked = false;
    bool endless = false;            // repeat the body
    std::optional<qint64> stopAfter; // so many bytes of the body
    bool cut = false;                // at the end, break the connection instead of closing it
    qint64 bytesPerSecond = 0;
    std::chrono::milliseconds bodyPause{0};
};

// The reply to a request. Only requests over TLS (`secure`) are redirected.
PackageReply makeReply(const PackageAnswer &answer, const PackageRequest &request, bool secure,
                       quint16 plainPort);

} // namespace vorn
