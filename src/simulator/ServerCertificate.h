#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace vorn {

enum class CertificateKind {
    Good,           // for localhost, 127.0.0.1 and ::1
    WrongName,      // for another host
    OtherAuthority, // signed by an authority that is not the one handed out
    Expired         // was good until 2021
};

// A server's key and certificate and the authority that a client is to trust, all in PEM.
struct ServerCertificate
{
    QByteArray authority;
    QByteArray certificate;
    QByteArray key;
};

// Makes a fresh one with the program openssl. Nothing, and the reason in *problem, when that
// program is missing or fails. Takes some tens of milliseconds.
std::optional<ServerCertificate> makeServerCertificate(CertificateKind kind, QString *problem);

} // namespace vorn
