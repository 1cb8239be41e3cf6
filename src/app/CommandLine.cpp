#include "app/CommandLine.h"

#include "app/Causes.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>

namespace vorn {
namespace {

constexpr int kUsageError = 2;

// What is wrong with the directory, in words for a person; empty when nothing is.
QString problemOfDirectory(const QString &path)
{
    const QFileInfo directory(path);
    if (!directory.exists())
        return CommandLine::tr("The device directory does not exist: %1").arg(path);
    if (!directory.isDir())
        return CommandLine::tr("The device directory is not a directory: %1").arg(path);
    if (!directory.isReadable() || !directory.isExecutable())
        return CommandLine::tr("The device directory cannot be read: %1").arg(path);
    return {};
}

// Sets `packages`; what is wrong with the host or the certificate file, empty when nothing is.
QString problemOfPackages(const QString &host, const QString &caFile, PackageLocation &packages)
{
    if (!host.isEmpty()) {
        const auto location = PackageLocation::onHost(host);
        if (!location)
            return CommandLine::tr("The package host is not of the form HOST[:PORT]: %1").arg(host);
        packages = *location;
    }
    if (!caFile.isNull())
        if (const PackageProblem problem = packages.addCertificates(caFile))
            return explainDownload(problem).what;
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
        CommandLine::tr("Updates a device's firmware over its USB-serial link, and fetches firmware "
                       "packages."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  CommandLine::tr("Show this help and exit."));
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption deviceDirectory(
        QStringLiteral("device-dir"),
        CommandLine::tr("Besides the system's devices, offer every entry of DIR (a link to a "
                       "terminal) as a serial device named like the entry."),
        QStringLiteral("DIR"));
    const QCommandLineOption packageHost(
        QStringLiteral("package-host"),
        CommandLine::tr("Fetch packages from this server, over HTTPS."),
        QStringLiteral("HOST[:PORT]"), QStringLiteral(VORN_PACKAGE_HOST));
    const QCommandLineOption packageCa(
        QStringLiteral("package-ca"),
        CommandLine::tr("Trust the certificates in FILE (PEM) besides the system's for the package "
                       "server."),
        QStringLiteral("FILE"));
    parser.addOptions({help, deviceDirectory, packageHost, packageCa});

    const bool parsed = parser.parse(arguments);
    exitCode = 0;
    if (parsed && parser.isSet(help)) {
        print(stdout, parser.helpText());
        return std::nullopt;
    }
    if (parsed && parser.isSet(version)) {
        print(stdout, QCoreApplication::applicationName() + u' ' +
                          QCoreApplication::applicationVersion() + u'\n');
        return std::nullopt;
    }

    CommandLine wishes;
    wishes.deviceDirectory = parser.value(deviceDirectory);
    QString problem;
    if (!parsed)
        problem = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        problem =
            CommandLine::tr("Unexpected argument: %1").arg(parser.positionalArguments().constFirst());
    else if (parser.isSet(deviceDirectory))
        problem = problemOfDirectory(wishes.deviceDirectory);
    if (problem.isEmpty()) {
        problem =
            problemOfPackages(parser.value(packageHost), parser.value(packageCa), wishes.packages);
    }
    if (problem.isEmpty())
        return wishes;
    print(stderr, problem + u'\n' + CommandLine::tr("Try --help.") + u'\n');
    exitCode = kUsageError;
    return std::nullopt;
}

} // namespace vorn
