#pragma once

#include "platform/Failure.h"

namespace vorn {

// Why a package was not installed. After each kind: what its code is; 0 where nothing is said.
enum class PackageProblemKind {
    None,
    NameNotFound,     // QNetworkReply::NetworkError
    Unreachable,      // QNetworkReply::NetworkError: refused, no network, no name server, or
                      // trouble with the proxy
    ConnectionLost,   // QNetworkReply::NetworkError: ended before the whole body had arrived
    TimedOut,         // nothing came for this long, in seconds
    TooSlow,          // the whole transfer exceeded this limit, in seconds
    Certificate,      // QSslError::SslError
    Encryption,       // QNetworkReply::NetworkError: the TLS handshake failed, or got no answer
    InsecureRedirect, // QNetworkReply::NetworkError: redirected away from HTTPS
    Protocol,         // QNetworkReply::NetworkError: any other fault of the response
    HttpStatus,       // the HTTP status of a response whose body was no package
    UnusableName,     // the suggested file name gives no folder name
    TooLarge,         // more bytes than a package may have
    NotAnArchive,     // no zip archive, or an empty one
    BadEntry,         // an entry is damaged, or of a kind that cannot be unpacked
    EntryOutside,     // an entry's path leaves the package's folder
    EntryNameTaken,   // a file and a folder of one name
    Conflict,         // something that is not this program's is in the package's place
    FileSystem,       // errno
    NoCertificates,   // no regular file, or one without a certificate in PEM format
};

// `text` is the subject: a host, a suggested file name, a path, an archive entry's name.
using PackageProblem = Failure<PackageProblemKind>;

} // namespace vorn
