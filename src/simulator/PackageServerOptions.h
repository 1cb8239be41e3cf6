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

// How the package server answers; the defaults are a faultless answer. The package is served at
// /software/VornUpdate2.zip, every other address answers 404.
struct PackageAnswer
{
    QByteArray package;
    int status = 200; // another one comes with a page of text instead of the package
    std::optional<QByteArray> lastModified; // the header's text as it stands; none: no header
    BodyFraming framing = BodyFraming::Length;
    std::optional<qint64> declaredLength;    // the Content-Length said, whatever the body's is
    std::optional<qint64> truncateAt;        // after so many bytes the body ends, in good order
    std::optional<qint64> cutAt;             // after so many bytes the connection breaks
    bool endless = false;                    // the package again and again, and no end
    qint64 bytesPerSecond = 0;               // of the body; 0: as fast as the client takes it
    std::chrono::milliseconds bodyPause{0};  // between the headers and the body
    std::optional<QByteArray> suggestedName; // the file name in a Content-Disposition header
    // Redirects: "http" (to the same server without TLS), "https" (to /moved/VornUpdate2.zip, which
    // is never redirected), "loop" (to the same address), or any address. Empty: no redirect.
    QByteArray redirectTo;
    QList<QByteArray> extraHeaders; // whole header lines, sent as they stand
    bool garbageHeaders = false;    // lines that are no headers among the headers
    ServerSilence silence = ServerSilence::None;
};

// What is wrong with the answer, in words for a person; empty when nothing is.
QString packageAnswerProblem(const PackageAnswer &answer);

} // namespace vorn
