// The demonstration: with a display it starts the program with a simulated device and package
// server; without one it does a whole update by itself in the same window, on Qt's offscreen
// platform, and says whether the device holds the file.
#include "app/Causes.h"
#include "app/ViewController.h"
#include "demo/AutoPilot.h"
#include "platform/DirectoryDeviceRegistry.h"
#include "platform/QuitSignals.h"
#include "simulator/PackageServer.h"
#include "simulator/SampleFirmware.h"
#include "simulator/SimulatedDevice.h"
#include "window/MainWindow.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QLabel>
#include <QLoggingCategory>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/prctl.h>

#include <csignal>
#include <cstdio>

namespace {

bool hasDisplay()
{
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    return (!qEnvironmentVariableIsEmpty("DISPLAY") ||
            !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) &&
           !platform.startsWith("offscreen") && !platform.startsWith("minimal");
}

int complain(const QString &problem)
{
    std::fprintf(stderr, "%s\n", qPrintable(problem));
    return 1;
}

// A simulated device, a package server, and firmware and settings in directories of their own, so
// that the user's are left alone. `directory` is empty and belongs to the caller, who removes it.
struct Stage
{
    // Starts everything. Returns why it could not; empty: it could.
    QString start()
    {
        QDir().mkpath(devices);
        QString problem;
        if (!vorn::writeSampleFirmware(firmware, &problem) || !device.start(&problem) ||
            !server.start(&problem))
            return problem;
        return {};
    }

    const QString directory;
    const QString devices = directory + QStringLiteral("/devices");
    const QString cache = directory + QStringLiteral("/cache");
    const QString config = directory + QStringLiteral("/config");
    const QString firmware = cache + QStringLiteral("/VornUpdate2");
    vorn::SimulatedDevice device{{.directory = devices,
                                  .name = QStringLiteral("usbserial-demo"),
                                  .eraseTime = std::chrono::milliseconds(500),
                                  .baud = 2000000}};
    // Slow enough for its progress to be seen.
    vorn::PackageServer server{{.package = vorn::samplePackage(),
                                .lastModified = "Sat, 14 Nov 2026 09:30:00 GMT",
                                .bytesPerSecond = 400000}};
};

int showProgram(int argc, char **argv)
{
    vorn::QuitSignals quitSignals;
    QCoreApplication application(argc, argv);
    quitSignals.watch();
    const QTemporaryDir directory;
    Stage stage{directory.path()};
    if (const QString problem = stage.start(); !problem.isEmpty())
        return complain(problem);
    std::puts("The device \"usbserial-demo\" is simulated. Open it, choose a firmware file, and "
              "press Update.");
    std::fflush(stdout);

    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), stage.cache);
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), stage.config);
    program.setProcessEnvironment(environment);
    // The program ends with this one, however this one ends.
    program.setChildProcessModifier([] {
        ::prctl(PR_SET_PDEATHSIG, SIGTERM);
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
    });
    QObject::connect(&program, &QProcess::errorOccurred, &application,
                     [] { QCoreApplication::exit(1); });
    QObject::connect(&program, &QProcess::finished, &application, &QCoreApplication::exit);
    program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/vornupdater"),
                  {QStringLiteral("--device-dir"), stage.devices, QStringLiteral("--package-host"),
                   stage.server.host(), QStringLiteral("--package-ca"),
                   stage.server.authorityFile()});
    const int exitCode = QCoreApplication::exec();
    if (program.error() == QProcess::FailedToStart)
        return complain(program.errorString());
    program.terminate();
    program.waitForFinished();

    const vorn::DeviceReport report = stage.device.report();
    std::printf("The device was updated %d times", report.updates);
    if (report.updates > 0)
        std::printf("; it holds %lld bytes, SHA-256 %s",
                    static_cast<long long>(report.image.size()), qPrintable(report.imageSha256()));
    std::puts(".");
    return exitCode;
}

// Prints the window's status texts that have changed since the last call.
class StatusPrinter
{
public:
    explicit StatusPrinter(const QWidget &window)
    {
        m_clock.start();
        for (const auto *label : window.findChildren<QLabel *>())
            if (!label->accessibleDescription().isEmpty())
                m_shown.insert(label, QString());
    }
    void print()
    {
        for (auto shown = m_shown.begin(); shown != m_shown.end(); ++shown) {
            const QString text = shown.key()->text();
            if (text == std::exchange(shown.value(), text))
                continue;
            std::printf("%8.3f s  %-18s %s\n", static_cast<double>(m_clock.elapsed()) / 1000.0,
                        qPrintable(shown.key()->accessibleDescription() + QLatin1Char(':')),
                        qPrintable(text));
        }
        std::fflush(stdout);
    }

private:
    QElapsedTimer m_clock;
    QHash<const QLabel *, QString> m_shown;
};

int compareDeviceWith(const QString &path, const vorn::DeviceReport &report)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return complain(path + QStringLiteral(": ") + file.errorString());
    const QByteArray image = file.readAll();
    const QByteArray hash = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
    std::printf("\nfile    %s  %lld bytes\ndevice  %s  %lld bytes, %d protocol errors\n",
                hash.constData(), static_cast<long long>(image.size()),
                qPrintable(report.imageSha256()), static_cast<long long>(report.image.size()),
                report.errorCount);
    const bool equal = image == report.image && report.errorCount == 0;
    std::puts(equal ? "The device holds exactly that file."
                    : "The device does NOT hold that file.");
    return equal ? 0 : 1;
}

int updateByItself(int argc, char **argv)
{
    const QTemporaryDir directory;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(directory.filePath(QStringLiteral("cache"))));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(directory.filePath(QStringLiteral("config"))));
    const QApplication application(argc, argv);
    Stage stage{directory.path()};
    if (const QString problem = stage.start(); !problem.isEmpty())
        return complain(problem);
    vorn::PackageLocation packages =
        vorn::PackageLocation::onHost(stage.server.host()).value_or(vorn::PackageLocation());
    if (const auto failure = packages.addCertificates(stage.server.authorityFile()))
        return complain(vorn::explainDownload(failure).what);
    vorn::SerialDeviceRegistry::setSystem(
        std::make_unique<vorn::DirectoryDeviceRegistry>(stage.devices));

    std::puts("No display: the demonstration updates a simulated device by itself.\n");
    vorn::MainWindow window;
    StatusPrinter printer(window);
    // After each round of the event loop, so that only texts replaced within a round are missed.
    auto *rounds = QAbstractEventDispatcher::instance();
    for (const auto round :
         {&QAbstractEventDispatcher::aboutToBlock, &QAbstractEventDispatcher::awake})
        QObject::connect(rounds, round, &window, [&] { printer.print(); });
    ViewController controller(window, packages);
    controller.viewDidLoad();
    window.show();

    const QString screenshot =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../demo.png"));
    const std::optional<QString> file = vorn::updateInWindow(window, screenshot);
    printer.print();
    const int status =
        file ? compareDeviceWith(stage.firmware + QLatin1Char('/') + *file, stage.device.report())
             : 1;
    std::printf("The picture of the window is %s\n", qPrintable(screenshot));
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setOrganizationName(QStringLiteral("Vorn"));
    QCoreApplication::setApplicationName(QStringLiteral("vornupdater"));
    // The status texts say enough.
    QLoggingCategory::setFilterRules(QStringLiteral("vorn.*.info=false"));
    return hasDisplay() ? showProgram(argc, argv) : updateByItself(argc, argv);
}
