#pragma once

#include "firmware/PackageProblem.h"

#include <QList>
#include <QSslCertificate>
#include <QUrl>

#include <optional>

namespace vorn {

// URL of the latest package and the extra CAs trusted for it.
class PackageLocation
{
public:
    // No package server is configured.
    PackageLocation() = default;

    // The package on `host`, over HTTPS. Nothing when `host` is not "HOST[:PORT]" (an IPv6 address
    // in brackets).
    static std::optional<PackageLocation> onHost(const QString &host);

    // Trusts the certificates in a PEM file for this server, besides the system's. Fails with
    // NoCertificates or FileSystem.
    PackageProblem addCertificates(const QString &pemFile);

    bool isConfigured() const { return !m_url.isEmpty(); }
    const QUrl &url() const { return m_url; }
    // The CAs to trust, including the system's; empty means the system's alone.
    const QList<QSslCertificate> &certificates() const { return m_certificates; }

private:
    QUrl m_url;
    QList<QSslCertificate> m_certificates;
};

} // namespace vorn
