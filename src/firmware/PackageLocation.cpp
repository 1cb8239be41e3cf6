#include "firmware/PackageLocation.h"

#include <QFile>
#include <QRegularExpression>

namespace vorn {

std::optional<PackageLocation> PackageLocation::onHost(const QString &host)
{
    // What else an address may hold would move into its other parts.
    static const QRegularExpression otherParts(QStringLiteral("[/?#@\\s]|:$"));
    QUrl url(QStringLiteral("https://") + host, QUrl::StrictMode);
    if (host.contains(otherParts) || !url.isValid() || url.host().isEmpty() || url.port() == 0)
        return std::nullopt;
    url.setPath(QStringLiteral("/software/VornUpdate2.zip"));
    PackageLocation location;
    location.m_url = url;
    return location;
}

bool PackageLocation::addCertificates(const QString &pemFile, QString &error)
{
    QFile file(pemFile);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("%1: %2").arg(pemFile, file.errorString());
        return false;
    }
    const QList<QSslCertificate> found = QSslCertificate::fromDevice(&file, QSsl::Pem);
    if (found.isEmpty()) {
        error = QStringLiteral("%1: no certificate in PEM format").arg(pemFile);
        return false;
    }
    m_certificates += found;
    return true;
}

} // namespace vorn
