#pragma once

#include <QList>
#include <QSslCertificate>
#include <QString>
#include <QUrl>

#include <optional>

namespace vorn {

// Where the latest package is to be had, and whom to believe that it is the package server.
class PackageLocation
{
public:
    // No package server is configured.
    PackageLocation() = default;

    // The package on `host`, "HOST[:PORT]" (an IPv6 address in brackets), over HTTPS. Nothing when
    // `host` is no such text.
    static std::optional<PackageLocation> onHost(const QString &host);

    // Adds the certificates of a PEM file to the system's for this server. False when it holds none
    // or cannot be read; `error` then says which.
    bool addCertificates(const QString &pemFile, QString &error);

    bool isConfigured() const { return !m_url.isEmpty(); }
    const QUrl &url() const { return m_url; }
    const QList<QSslCertificate> &certificates() const { return m_certificates; }

private:
    QUrl m_url;
    QList<QSslCertificate> m_certificates;
};

} // namespace vorn
