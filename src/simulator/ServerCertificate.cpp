#include "simulator/ServerCertificate.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

namespace vorn {

namespace {

// %1: the directory to work in; %2: the signing authority; %3: the server's names; %4: the days
// that its certificate is valid. No configuration is read, since the system's may say anything.
constexpr const char *kScript = R"(cd '%1' && {
request() {
    name=$1 && shift
    openssl req -config /dev/null -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes \
        -keyout $name.key -out $name.pem -subj "/CN=Vorn $name" "$@"
}
authority() {
    request $1 -x509 -days 30 -addext basicConstraints=critical,CA:TRUE
}
authority trusted && authority other && request server -addext subjectAltName=%3 &&
    openssl x509 -req -in server.pem -copy_extensions copy -days %4 \
        -CA %2.pem -CAkey %2.key -out signed.pem
} >log 2>&1 </dev/null)";

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

std::optional<ServerCertificate> makeServerCertificate(CertificateKind kind, QString *problem)
{
    const bool isOther = kind == CertificateKind::OtherAuthority;
    const bool isElsewhere = kind == CertificateKind::WrongName;
    const bool isExpired = kind == CertificateKind::Expired;
    const QTemporaryDir directory;
    const QString script = QString::fromLatin1(kScript).arg(
        directory.path().replace(u'\'', QStringLiteral("'\\''")),
        isOther ? QStringLiteral("other") : QStringLiteral("trusted"),
        isElsewhere ? QStringLiteral("DNS:packages.example")
                    : QStringLiteral("IP:127.0.0.1,IP:::1,DNS:localhost"),
        isExpired ? QStringLiteral("-1") : QStringLiteral("30"));
    // system(3) and not QProcess: ThreadSanitizer no longer sees the locks of a thread that forked.
    if (!directory.isValid() || std::system(QFile::encodeName(script).constData()) != 0) {
        *problem = QStringLiteral("no certificate: %1%2")
                       .arg(directory.errorString(),
                            QString::fromLocal8Bit(contentOf(directory.filePath("log"))));
        return std::nullopt;
    }
    return ServerCertificate{contentOf(directory.filePath(QStringLiteral("trusted.pem"))),
                             contentOf(directory.filePath(QStringLiteral("signed.pem"))),
                             contentOf(directory.filePath(QStringLiteral("server.key")))};
}

} // namespace vorn
