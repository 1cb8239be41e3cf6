#pragma once

#include "simulator/PackageServerOptions.h"

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

// The request in a header block (up to and with the empty line); nothing when its first line is no
// HTTP request line.
std::optional<PackageRequest> parseRequest(const QByteArray &block);

// One reply, ready to be sent.
struct PackageReply
{
    int status = 200;
    QByteArray head; // status line and headers, with the empty line
    QByteArray body;
    bool chunked = false;
    bool endless = false;            // the body again and again
    std::optional<qint64> stopAfter; // bytes of the body
    bool cut = false;                // then the connection breaks; else it ends in good order
    qint64 bytesPerSecond = 0;
    std::chrono::milliseconds bodyPause{0};
};

// The reply to a request. `secure` says whether it came over TLS: redirects concern only such.
PackageReply makeReply(const PackageAnswer &answer, const PackageRequest &request, bool secure,
                       quint16 plainPort);

} // namespace vorn
