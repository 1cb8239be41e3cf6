#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <chrono>
#include <optional>

namespace vorn {

enum class BodyFraming {
    Length,    // a Content-Length
    Chunked,   // chunked transfer coding, no Content-Length
    UntilClose // neither: the body ends with the connection
};

enum class ServerSilence {
    None,
    Handshake, // accepts connections and never begins the TLS handshake
    Request    // takes the request and never answers
};

// How the package server answers; the default is a correct answer. The package is at
// /software/VornUpdate2.zip, any other address answers 404.
struct PackageAnswer
{
    QByteArray package{};
    int status = 200; // with another one, a page of text takes the place of the package
    std::optional<QByteArray> lastModified{}; // value of that header; none: no header
    BodyFraming framing = BodyFraming::Length;
    std::optional<qint64> declaredLength{};    // Content-Length to send, whatever the body's is
    std::optional<qint64> truncateAt{};        // end the body after so many bytes, in good order
    std::optional<qint64> cutAt{};             // break the connection after so many bytes of body
    bool endless = false;                      // send the package again and again
    qint64 bytesPerSecond = 0;                 // of the body; 0: as fast as the client takes it
    std::chrono::milliseconds bodyPause{0};    // between the headers and the body
    std::optional<QByteArray> suggestedName{}; // file name in a Content-Disposition header
    // Redirects: "http" (to the same server without TLS), "https" (to /moved/VornUpdate2.zip, which
    // is never redirected), "loop" (to the same address), or any address. Empty: no redirect.
    QByteArray redirectTo{};
    QList<QByteArray> extraHeaders{}; // whole header lines, sent as they are
    bool garbageHeaders = false;      // malformed lines among the headers
    ServerSilence silence = ServerSilence::None;
};

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
    QByteArray head{}; // status line and headers, with the empty line
    QByteArray body{};
    PackageAnswer how{}; // the body's framing, speed and faults; its package is not used
};

// The reply to a request. Only requests over TLS (`secure`) are redirected.
PackageReply makeReply(const PackageAnswer &answer, const PackageRequest &request, bool secure,
                       quint16 plainPort);

} // namespace vorn
