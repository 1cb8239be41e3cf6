#include "app/PackageTexts.h"

#include <QDebug>
#include <QSslError>

#include <cstring>

namespace vorn {

namespace {

using Kind = PackageProblemKind;

QString reason(const PackageProblem &problem)
{
    switch (problem.kind) {
    case Kind::None:
        break;
    case Kind::NotConfigured:
        return QStringLiteral("no package server is configured");
    case Kind::NameNotFound:
        return QStringLiteral("the host name cannot be resolved");
    case Kind::Unreachable:
        return QStringLiteral("the server cannot be reached (network error %1)").arg(problem.code);
    case Kind::ConnectionLost:
        return QStringLiteral("the connection was lost");
    case Kind::TimedOut:
        return QStringLiteral("no response within %1 s").arg(problem.code);
    case Kind::Certificate:
        return QSslError(static_cast<QSslError::SslError>(problem.code)).errorString();
    case Kind::Encryption:
        return QStringLiteral("the TLS handshake failed");
    case Kind::InsecureRedirect:
        return QStringLiteral("the server redirects to an unencrypted address");
    case Kind::Protocol:
        return QStringLiteral("invalid response (network error %1)").arg(problem.code);
    case Kind::HttpStatus:
        return QStringLiteral("the server responded with HTTP status %1").arg(problem.code);
    case Kind::Cancelled:
        return QStringLiteral("cancelled");
    case Kind::UnusableName:
        return QStringLiteral("unusable package name");
    case Kind::TooLarge:
        return QStringLiteral("the package is too large");
    case Kind::NotAnArchive:
        return QStringLiteral("the package is not a zip archive");
    case Kind::BadArchive:
        return QStringLiteral("the package is damaged");
    case Kind::Conflict:
        return QStringLiteral("a file or folder of another program is in the way");
    case Kind::NoSpace:
    case Kind::FileSystem:
        return QString::fromLocal8Bit(std::strerror(problem.code));
    case Kind::NoCertificates:
        return QStringLiteral("no certificate in PEM format");
    }
    return {};
}

} // namespace

QString texts::packageProgress(qint64 received, qint64 total)
{
    const float percentage = 100.0F * static_cast<float>(received) / static_cast<float>(total);
    const QString figure =
        total > 0 ? QString::asprintf("%.0f", double{percentage}) : QStringLiteral("--");
    return QStringLiteral("Prompt:Progress%1%").arg(figure);
}

QString description(const PackageProblem &problem)
{
    if (problem.text.isEmpty())
        return reason(problem);
    QString quoted;
    QDebug(&quoted).nospace() << problem.text << ": " << qUtf8Printable(reason(problem));
    return quoted;
}

} // namespace vorn
