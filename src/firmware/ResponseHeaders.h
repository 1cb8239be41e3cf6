#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QUrl>

#include <optional>

namespace vorn {

// What the download needs of an HTTP response's head.
struct UrlResponse
{
    int statusCode = 0;
    QUrl url;                            // of the body, after any redirects
    qint64 contentLength = 0;            // as by expectedLength()
    std::optional<QString> lastModified; // unchanged
    QByteArray contentDisposition;
};

// The value of "Content-Length"; 0 when it is missing, not a decimal number, or above 2^63 - 1.
qint64 expectedLength(QByteArrayView contentLength);

// The file name to save the body under: that of "Content-Disposition" (RFC 6266; "filename*" in
// UTF-8 or ISO-8859-1 takes precedence over "filename"), else the URL's last path component; of
// either only what follows the last "/" or "\", since a server names files, not places. May be
// empty.
QString suggestedFilename(const UrlResponse &response);

// The name of the folder that a package of this file name belongs to: the name up to its first ".".
// Empty when that is no name for a visible folder.
QString folderNameFor(const QString &filename);

} // namespace vorn
