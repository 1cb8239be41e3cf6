#include "app/ViewController.h"

#include "app/PackageTexts.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "platform/NotificationCenter.h"
#include "update/FirmwareImage.h"
#include "update/UpdateTexts.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

using namespace std::chrono_literals;
using vorn::currentTitle;
using vorn::MainWindow;
using vorn::setText;
using vorn::setTitle;
using vorn::Tone;

namespace {

Q_LOGGING_CATEGORY(logController, "vorn.app")

const QString kOpen = QStringLiteral("Open");
const QString kClose = QStringLiteral("Close");
const QString kNoDevice = QStringLiteral("No device selected");
const QString kNoFirmware = QStringLiteral("No firmware selected");
const QString kDeviceNamePrefix = QStringLiteral("usbserial-");

// The speed of the device's boot loader.
constexpr quint32 kBaudRate = 2000000;
// What a device needs, with some room, to tell its model after the port was opened.
constexpr auto kRefillDelay = 500ms;
// A port that has not closed by then is reported so; closing itself goes on.
constexpr auto kCloseLimit = 2s;

QString devicePrefix(const ORSSerialPort &port)
{
    return port.name().left(kDeviceNamePrefix.size());
}

QStringList namesOf(const ORSSerialPortList &ports)
{
    QStringList names;
    for (const ORSSerialPortPtr &port : ports)
        names.append(port->name());
    return names;
}

} // namespace

ViewController::ViewController(MainWindow &window, vorn::PackageLocation packages,
                               const vorn::UpdateTimings &timings)
    : m_window(window), m_hasPackageServer(packages.isConfigured()), m_library(*this),
      m_updater(this, timings), m_download(std::move(packages), m_library, *this)
{
    m_closeLimit.setSingleShot(true);
    m_closeLimit.setInterval(kCloseLimit);
    connect(&m_closeLimit, &QTimer::timeout, this, &ViewController::showClosing);
}

ViewController::~ViewController()
{
    setSerialPort(nullptr);
}

void ViewController::viewDidLoad()
{
    wireControls();
    m_serialPortManager = &ORSSerialPortManager::sharedSerialPortManager();

    auto &center = vorn::NotificationCenter::defaultCenter();
    center.addObserver(this, ORSSerialPortWasConnectedNotification,
                       [this](const QVariantMap &userInfo) { serialPortsWereConnected(userInfo); });
    center.addObserver(
        this, ORSSerialPortWasDisconnectedNotification,
        [this](const QVariantMap &userInfo) { serialPortsWereDisconnected(userInfo); });

    vorn::StagingFolder::recoverInterruptedPublish();
    m_library.readFirmWare(targetVersion());
    getDeviceConnected();
}

void ViewController::wireControls()
{
    m_controls = vorn::Controls::below(m_window.centralWidget());
    const auto wireButton = [&](const QPushButton *button, void (ViewController::*action)()) {
        if (button)
            connect(button, &QPushButton::clicked, this, action);
    };
    const auto wireList = [&](const QComboBox *list, void (ViewController::*action)()) {
        if (list)
            connect(list, &QComboBox::activated, this, action);
    };
    wireButton(m_controls.updateBtn, &ViewController::send);
    wireButton(m_controls.downloadBtn, &ViewController::getFirmWare);
    wireButton(m_controls.openBtn, &ViewController::openHandleBtn);
    wireList(m_controls.filePopUpBtn, &ViewController::fileHandlePopBtn);
    wireList(m_controls.devPopUpBtn, &ViewController::devHandlePopBtn);

    showConnection(vorn::texts::kNoDeviceSelected);
    m_window.setDownloadAvailable(m_hasPackageServer, m_hasPackageServer
                                                          ? tr("Fetch the latest firmware package")
                                                          : tr("No package server is configured"));
}

void ViewController::setSerialPort(const ORSSerialPortPtr &port)
{
    if (port == m_serialPort)
        return;
    if (m_serialPort) {
        disconnect(m_portOpenConnection);
        m_serialPort->close();
        m_serialPort->setDelegate(nullptr);
        m_closeLimit.stop();
        m_closing = false;
        m_updater.portWasClosed();
    }
    m_serialPort = port;
    if (m_serialPort) {
        m_serialPort->setDelegate(this);
        m_portOpenConnection = connect(m_serialPort.get(), &ORSSerialPort::fileDescriptorChanged,
                                       this, &ViewController::portOpenChanged);
    }
}

void ViewController::getDeviceConnected()
{
    setSerialPort(nullptr);
    QComboBox *list = m_controls.devPopUpBtn;
    if (list) {
        list->clear();
        list->addItem(kNoDevice);
    }
    const ORSSerialPortList ports = m_serialPortManager->availablePorts();
    for (const ORSSerialPortPtr &port : ports) {
        if (devicePrefix(*port) != kDeviceNamePrefix)
            continue;
        // The placeholder, which is the current item, takes the name too: the list shows it twice.
        if (list) {
            list->addItem(port->name());
            list->setItemText(list->currentIndex(), port->name());
        }
        setSerialPort(port);
        showConnection(QStringLiteral("Prompt:%1 Selected,not opened").arg(port->name()));
        break;
    }
    if (!m_serialPort) {
        showConnection(vorn::texts::kNoDeviceSelected);
        setTitle(m_controls.openBtn, kOpen);
    }
}

void ViewController::devHandlePopBtn()
{
    const QString title = currentTitle(m_controls.devPopUpBtn);
    qCInfo(logController).noquote()
        << "Device list:" << m_controls.devPopUpBtn->currentIndex() << title;
    // The whole title against a name's first ten characters: only a title of ten can match.
    const ORSSerialPortList ports = m_serialPortManager->availablePorts();
    for (const ORSSerialPortPtr &port : ports)
        if (devicePrefix(*port) == title)
            setSerialPort(port);
}

void ViewController::openHandleBtn()
{
    if (!m_serialPort)
        return;
    const QString title = m_controls.openBtn->text();
    if (!m_serialPort->isOpen() && title == kOpen)
        openSerialPort();
    else if (m_serialPort->isOpen() && title == kClose)
        closeSerialPort();
}

void ViewController::openSerialPort()
{
    const QString name = m_serialPort->name();
    m_serialPort->setBaudRate(kBaudRate);
    m_serialPort->open();
    if (!m_serialPort->isOpen()) {
        setTitle(m_controls.openBtn, kOpen);
        showConnection(
            QStringLiteral("Prompt:%1 Selected,failed to open,please try again").arg(name),
            Tone::Bad);
        return;
    }
    setTitle(m_controls.openBtn, kClose);
    showConnection(QStringLiteral("Prompt:%1 Selected,opened successfully").arg(name), Tone::Good);
    m_openedAt = std::chrono::steady_clock::now();
    m_updater.getTargetVersion(m_serialPort);
    QTimer::singleShot(kRefillDelay, Qt::PreciseTimer, this,
                       &ViewController::readFirmWareInBackground);
}

void ViewController::closeSerialPort()
{
    m_closing = true;
    m_serialPort->close();
    if (!m_closeLimit.isActive())
        m_closeLimit.start();
}

void ViewController::portOpenChanged()
{
    if (m_serialPort->isOpen())
        return;
    m_updater.portWasClosed();
    if (m_closing)
        showClosing();
}

// The port has closed, or has not in time; then this is called once more when it has.
void ViewController::showClosing()
{
    m_closeLimit.stop();
    const QString name = m_serialPort->name();
    if (m_serialPort->isOpen()) {
        setTitle(m_controls.openBtn, kClose);
        showConnection(QStringLiteral("Prompt:%1 Selected,closeing failed").arg(name), Tone::Bad);
    } else {
        m_closing = false;
        setTitle(m_controls.openBtn, kOpen);
        showConnection(QStringLiteral("Prompt:%1 Selected,close successfully").arg(name));
    }
}

void ViewController::fileHandlePopBtn()
{
    const QString title = currentTitle(m_controls.filePopUpBtn);
    qCInfo(logController).noquote()
        << "Firmware list:" << m_controls.filePopUpBtn->currentIndex() << title;
    m_fileName = title;
    setText(m_controls.perText, title == kNoFirmware ? vorn::texts::kNoFirmwareSelected
                                                     : QStringLiteral("Prompt:Firmware selected"));
    m_window.setStatusTone(MainWindow::Line::Firmware, Tone::Neutral);
}

void ViewController::send()
{
    if (m_updater.isUpdating())
        return;
    if (!m_serialPort)
        return refuseUpdate(vorn::texts::kNoDeviceSelected);
    if (!m_serialPort->isOpen())
        return refuseUpdate(vorn::texts::kDeviceNotOpened);
    // A list that was never filled offers nothing to choose either.
    const QString firmware = currentTitle(m_controls.filePopUpBtn);
    if (firmware.isNull() || firmware == kNoFirmware)
        return refuseUpdate(vorn::texts::kNoFirmwareSelected);

    QString imagePath;
    if (!m_fileName.isNull()) {
        imagePath = QDir(vorn::cachesDirectory())
                        .filePath(m_download.curDirName() + QLatin1Char('/') + m_fileName);
        const auto check = vorn::checkFirmwareImage(imagePath);
        if (const auto *error = std::get_if<vorn::ImageError>(&check)) {
            qCWarning(logController).noquote() << error->description();
            return refuseUpdate(vorn::texts::kUpdateFailed);
        }
    }
    m_updater.startUpdate(m_serialPort, imagePath);
}

// A press that cannot start an update leaves the device alone.
void ViewController::refuseUpdate(const QString &text)
{
    showUpdateText(text);
    m_window.resetUpdateProgress();
}

void ViewController::serialPortsWereConnected(const QVariantMap &userInfo)
{
    const auto ports = userInfo.value(ORSConnectedSerialPortsKey).value<ORSSerialPortList>();
    qCInfo(logController) << "Ports were connected:" << namesOf(ports);
    postUserNotificationForConnectedPorts(ports);
}

void ViewController::serialPortsWereDisconnected(const QVariantMap &userInfo)
{
    const auto ports = userInfo.value(ORSDisconnectedSerialPortsKey).value<ORSSerialPortList>();
    qCInfo(logController) << "Ports were disconnected:" << namesOf(ports);
    postUserNotificationForDisconnectedPorts(ports);
}

void ViewController::postUserNotificationForConnectedPorts(const ORSSerialPortList &ports)
{
    announce(tr("Serial Port Connected"), tr("Serial Port %1 was connected to your Mac."), ports);
}

void ViewController::postUserNotificationForDisconnectedPorts(const ORSSerialPortList &ports)
{
    announce(tr("Serial Port Disconnected"), tr("Serial Port %1 was disconnected from your Mac."),
             ports);
}

void ViewController::announce(const QString &title, const QString &text,
                              const ORSSerialPortList &ports)
{
    if (!vorn::DesktopNotifications::exists())
        return;
    for (const ORSSerialPortPtr &port : ports)
        m_notifications.deliver(title, text.arg(port->name()));
    getDeviceConnected();
}

void ViewController::serialPortWasRemovedFromSystem(ORSSerialPort &) {}

void ViewController::serialPortDidReceiveData(ORSSerialPort &, const QByteArray &data)
{
    m_updater.serialPortDidReceiveData(data);
}

void ViewController::serialPortDidEncounterError(ORSSerialPort &serialPort,
                                                 const ORSSerialPortError &error)
{
    qCWarning(logController).noquote()
        << "Serial port" << serialPort.description() << "encountered an error:" << error.description
        << '(' << error.code << ')' << error.path;
}

void ViewController::showUpdateText(const QString &text)
{
    // Outside a run only failures are shown.
    m_window.setStatusTone(MainWindow::Line::Update,
                           m_updater.isUpdating() ? Tone::Neutral : Tone::Bad);
    setText(m_controls.updateText, text);
}

void ViewController::updateDidBegin()
{
    m_percent = 0;
    m_window.resetUpdateProgress();
    m_window.setUpdateRuns(true);
}

void ViewController::updateDidProgress(int percent)
{
    m_percent = percent;
    m_window.showUpdateProgress(percent);
}

void ViewController::updateIsErasing()
{
    m_window.showUpdateBusy();
}

void ViewController::updateDidEnd(const vorn::UpdateResult &result)
{
    m_window.setStatusTone(MainWindow::Line::Update, result.succeeded() ? Tone::Good : Tone::Bad);
    // A failure during the erase leaves the bar indeterminate otherwise.
    m_window.showUpdateProgress(m_percent);
    m_window.setUpdateRuns(false);
}

void ViewController::versionQueryDidEnd()
{
    // A device that told its model after the list was filled gets the list for its model now.
    if (std::chrono::steady_clock::now() - m_openedAt >= kRefillDelay)
        readFirmWareInBackground();
}

void ViewController::readFirmWareInBackground()
{
    m_library.readFirmWareInBackground(targetVersion());
}

void ViewController::firmwareListDidChange(const QStringList &files)
{
    QComboBox *list = m_controls.filePopUpBtn;
    if (!list)
        return;
    list->clear();
    list->addItem(kNoFirmware);
    list->addItems(files);
}

void ViewController::showConnection(const QString &text, Tone tone)
{
    m_window.setStatusTone(MainWindow::Line::Connection, tone);
    setText(m_controls.connectText, text);
}

void ViewController::getFirmWare()
{
    if (m_download.sendRequest())
        m_window.showDownloadBusy();
}

void ViewController::showDownload(const QString &text)
{
    m_window.setStatusTone(MainWindow::Line::Firmware, Tone::Neutral);
    setText(m_controls.perText, text);
}

void ViewController::showDownloadProgress(qint64 received, qint64 total)
{
    if (total > 0)
        m_window.showDownloadProgress(
            static_cast<int>(std::min(100 * received / total, qint64{100})));
    else
        m_window.showDownloadBusy();
}

void ViewController::endDownload(Tone tone)
{
    m_window.setStatusTone(MainWindow::Line::Firmware, tone);
    if (!m_download.isRunning())
        m_window.hideDownloadProgress();
}

void ViewController::packageResponseDidArrive(qint64 total)
{
    showDownload(vorn::texts::kPackageResponse);
    showDownloadProgress(0, total);
}

void ViewController::packageDidProgress(qint64 received, qint64 total)
{
    showDownload(vorn::texts::packageProgress(received, total));
    showDownloadProgress(received, total);
}

void ViewController::packageWillUnpack()
{
    m_window.showDownloadBusy();
}

void ViewController::packageIsUpToDate()
{
    showDownload(vorn::texts::kPackageIsUpToDate);
    endDownload(Tone::Good);
}

void ViewController::packageDidFail(const vorn::PackageProblem &problem, bool showsInStatus)
{
    qCWarning(logController).noquote() << "No package installed:" << vorn::description(problem);
    if (showsInStatus)
        showDownload(vorn::texts::kPackageFailed);
    endDownload(Tone::Bad);
}

void ViewController::packageWasInstalled()
{
    showDownload(vorn::texts::kPackageInstalled);
    endDownload(Tone::Good);
}

void ViewController::firmwareFolderDidChange()
{
    m_library.readFirmWare(targetVersion());
}
