#include "app/SharedOptions.h"

#include "app/Causes.h"
#include "platform/CombinedDeviceRegistry.h"
#include "platform/DirectoryDeviceRegistry.h"
#include "platform/MainQueue.h"
#include "platform/UdevDeviceRegistry.h"

#include <QCommandLineParser>
#include <QFile>

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

#include <cerrno>

namespace vorn {
namespace {

QString directoryProblem(const QString &path, int error)
{
    return CommandLine::tr("The device directory %1 cannot be used: %2")
        .arg(path, QString::fromLocal8Bit(std::strerror(error)));
}

// What is wrong with the directory, in words for a person; empty when nothing is.
QString problemOfDirectory(const QString &path)
{
    errno = ENOENT;
    // The entry of itself, which only a directory has.
    if (!path.isEmpty() &&
        ::access(QFile::encodeName(path + QStringLiteral("/.")), R_OK | X_OK) == 0)
        return {};
    return directoryProblem(path, errno);
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

} // namespace

SharedOptions::SharedOptions(QCommandLineParser &parser)
    : m_parser(parser), m_help({QStringLiteral("h"), QStringLiteral("help")},
                               CommandLine::tr("Show this help and exit.")),
      m_version(parser.addVersionOption()),
      m_deviceDirectory(
          QStringLiteral("device-dir"),
          CommandLine::tr("Besides the system's devices, offer every entry of DIR (a link to a "
                          "terminal) as a serial device named like the entry."),
          QStringLiteral("DIR")),
      m_packageHost(QStringLiteral("package-host"),
                    CommandLine::tr("Fetch packages from this server, over HTTPS."),
                    QStringLiteral("HOST[:PORT]"), QStringLiteral(VORN_PACKAGE_HOST)),
      m_packageCa(QStringLiteral("package-ca"),
                  CommandLine::tr("Trust the certificates in FILE (PEM) besides the system's for "
                                  "the package server."),
                  QStringLiteral("FILE"))
{
    parser.addOptions({m_help, m_deviceDirectory, m_packageHost, m_packageCa});
}

bool SharedOptions::isHelpWanted() const
{
    return m_parser.isSet(m_help);
}

bool SharedOptions::isVersionWanted() const
{
    return m_parser.isSet(m_version);
}

QString SharedOptions::read(CommandLine &wishes) const
{
    wishes.deviceDirectory = m_parser.value(m_deviceDirectory);
    QString problem;
    if (m_parser.isSet(m_deviceDirectory))
        problem = problemOfDirectory(wishes.deviceDirectory);
    if (problem.isEmpty())
        problem = problemOfPackages(m_parser.value(m_packageHost), m_parser.value(m_packageCa),
                                    wishes.packages);
    return problem;
}

QString installDeviceRegistry(const QString &deviceDirectory)
{
    if (deviceDirectory.isEmpty())
        return {};
    auto directory = std::make_unique<DirectoryDeviceRegistry>(deviceDirectory);
    const int error = directory->watchError();
    CombinedDeviceRegistry::Registries registries;
    registries.push_back(std::make_unique<UdevDeviceRegistry>());
    registries.push_back(std::move(directory));
    SerialDeviceRegistry::setSystem(
        std::make_unique<CombinedDeviceRegistry>(std::move(registries)));
    return error != 0 ? directoryProblem(deviceDirectory, error) : QString();
}

bool startQueues()
{
    try {
        MainQueue::instance();
        return true;
    } catch (const std::system_error &error) {
        print(stderr, CommandLine::tr("The program cannot start: %1")
                              .arg(QString::fromStdString(error.code().message())) +
                          u'\n');
        return false;
    }
}

int print(FILE *stream, const QString &text)
{
    return std::fputs(qPrintable(text), stream) < 0 || std::fflush(stream) != 0 ? errno : 0;
}

} // namespace vorn
