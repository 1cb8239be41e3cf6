#pragma once

#include <QString>

namespace vorn {

// Why a package was not installed: a fact for a log or a details line, beside the status text.
struct PackageProblem
{
    // What `code` holds stands behind each kind; where nothing stands, it is 0.
    enum class Kind {
        None,
        NotConfigured,    // no package server is known
        NameNotFound,     // QNetworkReply::NetworkError
        Unreachable,      // QNetworkReply::NetworkError: refused, no network, proxy trouble
        ConnectionLost,   // QNetworkReply::NetworkError: ended before the whole body was there
        TimedOut,         // no byte for the length of the transfer's time-out
        Certificate,      // QSslError::SslError: the server could not prove who it is
        Encryption,       // QNetworkReply::NetworkError: no encrypted connection came about
        InsecureRedirect, // QNetworkReply::NetworkError: sent on to a place without encryption
        Protocol,     // QNetworkReply::NetworkError: anything else that is wrong with the answer
        HttpStatus,   // the HTTP status of an answer whose body was no package
        Cancelled,    // QNetworkReply::NetworkError: ended from this side
        UnusableName, // the suggested file name gives no folder name
        TooLarge,     // more bytes than a package may have
        NotAnArchive, // no zip archive, or an empty one
        BadArchive,   // an archive that could not be unpacked whole
        Conflict,     // a file stands where the package has a folder, or the other way round
        NoSpace,      // errno: ENOSPC or EDQUOT
        FileSystem,   // errno
    };

    Kind kind = Kind::None;
    QString text; // one line, for people
    int code = 0;

    explicit operator bool() const { return kind != Kind::None; }

    // What `error` (an errno) says about an operation on `path`.
    static PackageProblem fromErrno(int error, const QString &path);
};

} // namespace vorn
