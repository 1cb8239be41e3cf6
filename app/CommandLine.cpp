#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QSslCertificate>
#include <QUrl>

#include <cstdio>

namespace vorn {
namespace {

constexpr int kUsageError = 2;

// What is wrong with the wishes, in words for a person; empty when nothing is.
QString problemOf(const CommandLine &wishes)
{
    if (!wishes.deviceDirectory.isNull()) {
        const QFileInfo directory(wishes.deviceDirectory);
        if (!directory.exists())
            return QStringLiteral("The device directory does not exist: ") + wishes.deviceDirectory;
        if (!directory.isDir())
            return QStringLiteral("The device directory is not a directory: ") +
                   wishes.deviceDirectory;
        if (!directory.isReadable() || !directory.isExecutable())
            return QStringLiteral("The device directory cannot be read: ") + wishes.deviceDirectory;
    }
    if (!wishes.packageHost.isEmpty()) {
        const QUrl url(QStringLiteral("https://") + wishes.packageHost, QUrl::StrictMode);
        if (!url.isValid() || url.host().isEmpty() || !url.path().isEmpty() || url.hasQuery() ||
            url.hasFragment() || !url.userInfo().isEmpty())
            return QStringLiteral("The package host is not of the form HOST[:PORT]: ") +
                   wishes.packageHost;
    }
    if (!wishes.packageCaFile.isNull()) {
        QFile file(wishes.packageCaFile);
        if (!file.open(QIODevice::ReadOnly))
            return QStringLiteral("The certificate file cannot be read: %1: %2")
                .arg(wishes.packageCaFile, file.errorString());
        if (QSslCertificate::fromDevice(&file, QSsl::Pem).isEmpty())
            return QStringLiteral("There is no PEM certificate in the file: ") +
                   wishes.packageCaFile;
    }
    return {};
}

void print(FILE *stream, const QString &text)
{
    std::fputs(qPrintable(text), stream);
}

} // namespace

std::optional<CommandLine> readCommandLine(const QStringList &arguments, int &exitCode)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Updates a device's firmware over its USB-serial link, and fetches firmware "
                       "packages."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption deviceDirectory(
        QStringLiteral("device-dir"),
        QStringLiteral("Besides the system's devices, offer every entry of DIR (a link to a "
                       "terminal) as a serial device named like the entry."),
        QStringLiteral("DIR"));
    const QCommandLineOption packageHost(
        QStringLiteral("package-host"),
        QStringLiteral("Fetch packages from this server, over HTTPS."),
        QStringLiteral("HOST[:PORT]"), QStringLiteral(VORN_PACKAGE_HOST));
    const QCommandLineOption packageCa(
        QStringLiteral("package-ca"),
        QStringLiteral("Trust the certificates in FILE (PEM) besides the system's for the package "
                       "server."),
        QStringLiteral("FILE"));
    parser.addOptions({deviceDirectory, packageHost, packageCa});

    const bool parsed = parser.parse(arguments);
    exitCode = 0;
    if (parsed && parser.isSet(help)) {
        print(stdout, parser.helpText());
        return std::nullopt;
    }
    if (parsed && parser.isSet(version)) {
        print(stdout, QCoreApplication::applicationName() + QLatin1Char(' ') +
                          QCoreApplication::applicationVersion() + QLatin1Char('\n'));
        return std::nullopt;
    }

    const CommandLine wishes{parser.value(deviceDirectory), parser.value(packageHost),
                             parser.value(packageCa)};
    QString problem;
    if (!parsed)
        problem = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        problem =
            QStringLiteral("Unexpected argument: ") + parser.positionalArguments().constFirst();
    else
        problem = problemOf(wishes);
    if (problem.isEmpty())
        return wishes;
    print(stderr, problem + QStringLiteral("\nTry --help.\n"));
    exitCode = kUsageError;
    return std::nullopt;
}

} // namespace vorn
