#include "firmware/PackageLocation.h"

#include <QFile>
#include <QRegularExpression>
#include <QSslConfiguration>

#include <cerrno>

namespace vorn {

std::optional<PackageLocation> PackageLocation::onHost(const QString &host)
{
    // Characters that would begin another part of the URL.
    static const QRegularExpression otherParts(QStringLiteral("[/?#@\\s]|:$"));
    QUrl url(QStringLiteral("https://") + host, QUrl::StrictMode);
    if (host.contains(otherParts) || !url.isValid() || url.host().isEmpty() || url.port() == 0)
        return std::nullopt;
    url.setPath(QStringLiteral("/software/VornUpdate2.zip"));
    PackageLocation location;
    location.m_url = url;
    return location;
}

PackageProblem PackageLocation::addCertificates(const QString &pemFile)
{
    QFile file(pemFile);
    errno = EISDIR; // Qt rejects a folder without a system call that fails
    if (!file.open(QIODevice::ReadOnly))
        return {PackageProblemKind::FileSystem, errno, pemFile};
    const QList<QSslCertificate> found = QSslCertificate::fromDevice(&file, QSsl::Pem);
    if (found.isEmpty())
        return {PackageProblemKind::NoCertificates, 0, pemFile};
    // Certificates that are set turn off loading the system's on demand. Those are read here,
    // before there is a window, since it takes a tenth of a second.
    if (m_certificates.isEmpty())
        m_certificates = QSslConfiguration::systemCaCertificates();
    m_certificates += found;
    return {};
}

} // namespace vorn
