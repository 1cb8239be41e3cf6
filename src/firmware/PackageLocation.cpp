#include "firmware/PackageLocation.h"

#include "platform/FileDescriptor.h"

#include <QFile>
#include <QRegularExpression>
#include <QSslConfiguration>

#include <fcntl.h>
#include <sys/stat.h>

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
    // A pipe without a writer would block for ever.
    const FileDescriptor opened(::open(QFile::encodeName(pemFile).constData(),
                                       O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status
    {
    };
    if (!opened.isValid() || ::fstat(opened.get(), &status) != 0)
        return {PackageProblemKind::FileSystem, errno, pemFile};
    QFile file;
    QList<QSslCertificate> found;
    if (S_ISREG(status.st_mode) && file.open(opened.get(), QIODevice::ReadOnly))
        found = QSslCertificate::fromDevice(&file, QSsl::Pem);
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
