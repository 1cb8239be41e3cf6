#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/Translations.h"
#include "app/ViewController.h"
#include "platform/ExitLimit.h"
#include "platform/MessageBus.h"
#include "platform/PowerEvents.h"
#include "platform/QuitSignals.h"
#include "serial/ORSSerialPortManager.h"
#include "window/MainWindow.h"

#include <QApplication>

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr int kNoDisplay = 1;
constexpr int kCannotStart = 1;

// Whether a window has a place to appear; Qt ends the process where none has.
bool hasDisplay(const QStringList &arguments)
{
    for (const char *variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        if (!qEnvironmentVariableIsEmpty(variable))
            return true;
    return arguments.contains(QStringLiteral("-platform"));
}

bool isAskedForText(const QStringList &arguments)
{
    for (const char *option : {"--help", "-h", "--version", "-v"})
        if (arguments.contains(QLatin1StringView(option)))
            return true;
    return false;
}

// The sleep waits until the ports have let go of their lines: what is still closing then could not
// be opened again afterwards.
void closePortsForSleep(const vorn::PowerEvents &powerEvents)
{
    auto &manager = ORSSerialPortManager::sharedSerialPortManager();
    const ORSSerialPortList ports = manager.availablePorts();
    for (const ORSSerialPortPtr &port : ports) {
        if (port->isOpen())
            QObject::connect(
                port.get(), &ORSSerialPort::fileDescriptorChanged, &powerEvents,
                [lock = powerEvents.delaySleep()] {}, Qt::SingleShotConnection);
    }
    manager.systemWillSleep();
}

// Help, the version and complaints need no display.
int runWithoutDisplay(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    vorn::installTranslations();
    int exitCode = 0;
    if (!vorn::readCommandLine(QCoreApplication::arguments(), exitCode))
        return exitCode;
    std::fputs(qPrintable(vorn::CommandLine::tr("There is no display for the window (DISPLAY and "
                                                "WAYLAND_DISPLAY are not set).") +
                          u'\n'),
               stderr);
    return kNoDisplay;
}

} // namespace

int main(int argc, char **argv)
{
    // Settings, packages and logs are for the user alone, whatever the umask that was inherited.
    ::umask(077);
    vorn::QuitSignals quitSignals;
    QCoreApplication::setOrganizationName(QStringLiteral("Vorn"));
    QCoreApplication::setApplicationName(QStringLiteral("vornupdater"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VORN_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("vornupdater"));

    const QStringList arguments(argv, argv + argc);
    if (isAskedForText(arguments) || !hasDisplay(arguments))
        return runWithoutDisplay(argc, argv);

    vorn::disableSilentBuses();
    QApplication application(argc, argv);
    vorn::installTranslations();
    int exitCode = 0;
    // The files that it names may be on a network file system that hangs.
    quitSignals.letKill();
    const auto wishes = vorn::readCommandLine(QCoreApplication::arguments(), exitCode);
    if (!wishes)
        return exitCode;
    quitSignals.watch();
    if (!vorn::startQueues())
        return kCannotStart;
    const QString unwatched = vorn::installDeviceRegistry(wishes->deviceDirectory);
    if (!unwatched.isEmpty())
        vorn::print(stderr, unwatched + u'\n');

    const AppDelegate delegate;
    QObject::connect(&application, &QCoreApplication::aboutToQuit,
                     [&] { delegate.applicationWillTerminate(); });

    vorn::MainWindow window;
    ViewController controller(window, wishes->packages);
    controller.viewDidLoad();
    // Nobody can open a port before. Connecting to the system's bus waits for its answers.
    std::unique_ptr<const vorn::PowerEvents> powerEvents;
    QObject::connect(&window, &vorn::MainWindow::didAppear, [&powerEvents] {
        powerEvents = std::make_unique<const vorn::PowerEvents>(
            [&powerEvents] { closePortsForSleep(*powerEvents); },
            [] { ORSSerialPortManager::sharedSerialPortManager().systemDidWake(); });
    });
    window.show();
    delegate.applicationDidFinishLaunching();
    // Qt itself calls exit() when the display goes away, and an update would wait for its answer.
    ::on_exit([](int status, void *) { vorn::limitExit(status); }, nullptr);
    exitCode = QApplication::exec();
    vorn::limitExit(exitCode);
    return exitCode;
}
