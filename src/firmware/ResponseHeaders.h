#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QUrl>

#include <optional>

namespace vorn {

// The part of an HTTP response that comes before its body, as it was received. A header that was
// absent is null.
struct UrlResponse
{
    int statusCode = 0;
    QUrl url; // where the body comes from, after any redirects
    QByteArray contentLength;
    QByteArray lastModified;
    QByteArray contentDisposition;
};

// The value of "Content-Length": 0 when it is absent, no plain decimal number, or above 2^63 - 1.
qint64 expectedLength(QByteArrayView contentLength);

// The value of "Last-Modified" as it stands; no value when it is absent.
std::optional<QString> lastModifiedValue(const QByteArray &lastModified);

// The file name that "Content-Disposition" gives (RFC 6266: "filename*" in UTF-8 or ISO-8859-1
// before "filename"), as it stands there; empty when it gives none.
QString dispositionFilename(QByteArrayView contentDisposition);

// The name under which to save the body: the one of "Content-Disposition", else the last part of
// the address; in either case only what follows the last "/" or "\", since a server names files,
// not places. May be empty.
QString suggestedFilename(const UrlResponse &response);

// The name of the folder that a package of this name belongs to: the name up to its first ".", or
// all of it. Empty when that is no name a visible folder can have.
QString folderNameFor(const QString &filename);

} // namespace vorn
