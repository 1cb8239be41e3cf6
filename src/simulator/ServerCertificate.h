#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace vorn {

enum class CertificateKind {
    Good,           // for localhost, 127.0.0.1 and ::1
    WrongName,      // for another host
    OtherAuthority, // signed by another authority than the one to trust
    Expired
};

// A server's certificate and key, and the authority that a client is to trust, all in PEM.
struct ServerCertificate
{
    QByteArray authority;
    QByteArray certificate;
    QByteArray key;
};

// Makes a new one with the program openssl, in some tens of milliseconds. Null, with the reason in
// *problem, when that fails.
std::optional<ServerCertificate> makeServerCertificate(CertificateKind kind, QString *problem);

} // namespace vorn
