// The demonstration: with a display it starts the program with a simulated device and package
// server; without one it does a whole update by itself in the same window, on Qt's offscreen
// platform, and says whether the device holds the file.
#include "app/StatusTexts.h"
#include "app/ViewController.h"
#include "demo/AutoPilot.h"
#include "demo/DemoStage.h"
#include "demo/StatusPrinter.h"
#include "platform/DirectoryDeviceRegistry.h"
#include "platform/QuitSignals.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QFileInfo>
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

int showProgram(int argc, char **argv)
{
    vorn::QuitSignals quitSignals;
    QCoreApplication application(argc, argv);
    quitSignals.watch();
    const QTemporaryDir directory;
    vorn::DemoStage stage(directory.path());
    QString problem;
    if (!stage.start(problem))
        return complain(problem);
    std::puts("The device \"usbserial-demo\" is simulated. Open it, choose a firmware file, and "
              "press Update.");
    std::fflush(stdout);

    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), stage.cacheDirectory());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), stage.configDirectory());
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
                  {QStringLiteral("--device-dir"), stage.deviceDirectory(),
                   QStringLiteral("--package-host"), stage.packageHost(),
                   QStringLiteral("--package-ca"), stage.packageCaFile()});
    const int exitCode = QCoreApplication::exec();
    if (program.error() == QProcess::FailedToStart)
        return complain(program.errorString());
    program.terminate();
    program.waitForFinished();

    const vorn::DeviceReport report = stage.device().report();
    std::printf("The device was updated %d times", report.updates);
    if (report.updates > 0)
        std::printf("; it holds %lld bytes, SHA-256 %s",
                    static_cast<long long>(report.image.size()), qPrintable(report.imageSha256()));
    std::puts(".");
    return exitCode;
}

int updateByItself(int argc, char **argv)
{
    const QTemporaryDir directory;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("XDG_CACHE_HOME", QFile::encodeName(directory.filePath(QStringLiteral("cache"))));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(directory.filePath(QStringLiteral("config"))));
    const QApplication application(argc, argv);
    vorn::DemoStage stage(directory.path());
    QString problem;
    if (!stage.start(problem))
        return complain(problem);
    vorn::PackageLocation packages =
        vorn::PackageLocation::onHost(stage.packageHost()).value_or(vorn::PackageLocation());
    if (const auto failure = packages.addCertificates(stage.packageCaFile()))
        return complain(vorn::texts::description(failure));
    vorn::SerialDeviceRegistry::setSystem(
        std::make_unique<vorn::DirectoryDeviceRegistry>(stage.deviceDirectory()));

    std::puts("No display: the demonstration updates a simulated device by itself.\n");
    vorn::MainWindow window;
    vorn::StatusPrinter printer(window);
    ViewController controller(window, packages);
    controller.viewDidLoad();
    window.show();

    const QString screenshot =
        QFileInfo(QCoreApplication::applicationDirPath() + QStringLiteral("/../demo.png"))
            .absoluteFilePath();
    const bool equal = vorn::AutoPilot(window, stage).run(screenshot);
    printer.printChanges();
    std::printf("The picture of the window is %s\n",
                qPrintable(QFileInfo(screenshot).canonicalFilePath()));
    return equal ? 0 : 1;
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
