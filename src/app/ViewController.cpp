#include "app/ViewController.h"

#include "app/StatusTexts.h"
#include "platform/NotificationCenter.h"
#include "update/FirmwareImage.h"

#include <QLoggingCategory>

#include <algorithm>

using vorn::currentTitle;
using vorn::FirmwareSection;
using vorn::MainWindow;
using vorn::setStatusTone;
using vorn::setTitle;
using vorn::showStatus;
using vorn::StatusTone;
using vorn::texts::Connection;

namespace {

Q_LOGGING_CATEGORY(logController, "vorn.app")

const QString kOpen = QStringLiteral("Open");
const QString kClose = QStringLiteral("Close");
const QString kNoDevice = QStringLiteral("No device selected");
const QString kDeviceNamePrefix = QStringLiteral("usbserial-");

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

void logResult(const vorn::UpdateResult &result)
{
    if (result.succeeded())
        qCInfo(logController).noquote() << vorn::texts::description(result);
    else
        qCWarning(logController).noquote() << vorn::texts::description(result);
}

} // namespace

ViewController::ViewController(MainWindow &window, const vorn::PackageLocation &packages,
                               const vorn::BootParameters &parameters)
    : m_window(window), m_controls(vorn::TaggedControls::below(window.centralWidget())),
      m_hasPackageServer(packages.isConfigured()), m_firmware(window, m_controls, packages),
      m_parameters(parameters)
{
    connect(&m_window, &MainWindow::closePortAnyway, this, [this] {
        if (m_session)
            m_session->close();
    });
}

ViewController::~ViewController() = default;

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

    m_firmware.begin();
    getDeviceConnected();
}

void ViewController::wireControls()
{
    const auto wire = [](auto *control, auto signal, auto *receiver, auto action) {
        if (control)
            connect(control, signal, receiver, action);
    };
    wire(m_controls.updateBtn.get(), &QPushButton::clicked, this, &ViewController::send);
    wire(m_controls.downloadBtn.get(), &QPushButton::clicked, &m_firmware,
         &FirmwareSection::getFirmWare);
    wire(m_controls.openBtn.get(), &QPushButton::clicked, this, &ViewController::openHandleBtn);
    wire(m_controls.filePopUpBtn.get(), &QComboBox::activated, &m_firmware,
         &FirmwareSection::fileHandlePopBtn);
    wire(m_controls.devPopUpBtn.get(), &QComboBox::activated, this,
         &ViewController::devHandlePopBtn);

    showStatus(m_controls.connectText, vorn::texts::kNoDeviceSelected, StatusTone::Neutral);
    m_window.setDownloadAvailable(m_hasPackageServer, m_hasPackageServer
                                                          ? tr("Fetch the latest firmware package")
                                                          : tr("No package server is configured"));
}

void ViewController::setSerialPort(const ORSSerialPortPtr &port)
{
    if (port == serialPort())
        return;
    if (m_session)
        m_session->end();
    m_session.reset();
    if (port)
        m_session = std::make_unique<vorn::DeviceSession>(port, *this, m_parameters);
}

void ViewController::getDeviceConnected()
{
    m_rebuildAfterUpdate = false;
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
        showConnection(Connection::NotOpened);
        break;
    }
    if (!m_session) {
        showStatus(m_controls.connectText, vorn::texts::kNoDeviceSelected, StatusTone::Neutral);
        setTitle(m_controls.openBtn, kOpen);
    }
}

void ViewController::devHandlePopBtn()
{
    const QString title = currentTitle(m_controls.devPopUpBtn);
    qCInfo(logController) << "Device list:" << title;
    if (isUpdating())
        return;
    // The whole title against a name's first ten characters: only a title of ten can match.
    const ORSSerialPortList ports = m_serialPortManager->availablePorts();
    for (const ORSSerialPortPtr &port : ports)
        if (devicePrefix(*port) == title)
            setSerialPort(port);
}

void ViewController::openHandleBtn()
{
    if (!m_session)
        return;
    const QString title = m_controls.openBtn ? m_controls.openBtn->text() : QString();
    if (!m_session->isOpen() && title == kOpen)
        openSerialPort();
    else if (m_session->isOpen() && title == kClose && isUpdating())
        m_window.askToClosePort();
    else if (m_session->isOpen() && title == kClose)
        m_session->close();
}

void ViewController::openSerialPort()
{
    if (!m_session->open()) {
        setTitle(m_controls.openBtn, kOpen);
        showConnection(Connection::OpenFailed, StatusTone::Bad);
        return;
    }
    deviceDidReopen();
    m_firmware.deviceDidOpen();
}

void ViewController::deviceDidReopen()
{
    setTitle(m_controls.openBtn, kClose);
    showConnection(Connection::Opened, StatusTone::Good);
}

void ViewController::deviceDidClose(bool onRequest)
{
    setTitle(m_controls.openBtn, kOpen);
    showConnection(onRequest ? Connection::Closed : Connection::NotOpened);
}

void ViewController::deviceDoesNotClose()
{
    setTitle(m_controls.openBtn, kClose);
    showConnection(Connection::CloseFailed, StatusTone::Bad);
}

void ViewController::send()
{
    if (isUpdating())
        return;
    if (!m_session)
        return refuseUpdate(vorn::texts::kNoDeviceSelected);
    if (!m_session->isOpen())
        return refuseUpdate(vorn::texts::kDeviceNotOpened);
    if (!m_firmware.offersFile())
        return refuseUpdate(vorn::texts::kNoFirmwareSelected);

    const QString imagePath = m_firmware.imagePath();
    // A list that shows a file which nobody chose is told only when the device is ready for it.
    vorn::UpdateResult check;
    check.step = vorn::UpdateStep::ReadImage;
    if (!imagePath.isNull())
        check.failure = vorn::checkFirmwareImage(imagePath);
    if (!check.succeeded()) {
        logResult(check);
        return refuseUpdate(vorn::texts::ofUpdateEnd(check).constFirst());
    }
    m_percent = 0;
    m_window.resetUpdateProgress();
    m_window.setUpdateRuns(true);
    setStatusTone(m_controls.updateText, StatusTone::Neutral);
    m_session->startUpdate(imagePath);
}

// A press that cannot start an update leaves the device alone.
void ViewController::refuseUpdate(const QString &text)
{
    showStatus(m_controls.updateText, text, StatusTone::Bad);
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
    const bool isCurrentGone = std::any_of(ports.begin(), ports.end(), [&](const auto &port) {
        return m_session && port->isEqual(*m_session->port());
    });
    // Nobody asked for this closing, so not by the session.
    if (isCurrentGone && isUpdating())
        m_session->port()->close();
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
    if (isUpdating())
        m_rebuildAfterUpdate = true;
    else
        getDeviceConnected();
}

void ViewController::deviceDidReportError(const ORSSerialPortError &error)
{
    qCWarning(logController) << "Serial port" << m_session->port()->description()
                             << "encountered an error:" << error.description << error.code
                             << error.path;
}

void ViewController::targetVersionDidArrive(qint32 targetVersion)
{
    m_firmware.setTargetVersion(targetVersion);
}

void ViewController::versionQueryDidEnd(const vorn::UpdateResult &result)
{
    if (!result.succeeded())
        logResult(result);
    for (const QString &text : vorn::texts::ofVersionQueryEnd(result))
        showStatus(m_controls.updateText, text, StatusTone::Bad);
    m_firmware.versionQueryDidEnd();
}

void ViewController::updateDidProgress(const vorn::UpdateProgress &progress)
{
    if (progress.step == vorn::UpdateStep::Erase)
        m_window.showUpdateBusy();
    if (progress.step != vorn::UpdateStep::Data)
        return;
    m_percent = progress.percent;
    m_window.showUpdateProgress(progress.percent);
    showStatus(m_controls.updateText, vorn::texts::ofProgress(progress), StatusTone::Neutral);
}

void ViewController::updateDidEnd(const vorn::UpdateResult &result)
{
    const StatusTone tone = result.succeeded() ? StatusTone::Good : StatusTone::Bad;
    setStatusTone(m_controls.updateText, tone);
    for (const QString &text : vorn::texts::ofUpdateEnd(result))
        showStatus(m_controls.updateText, text, tone);
    logResult(result);
    // Otherwise a failure during the erase leaves the bar indeterminate.
    m_window.showUpdateProgress(result.succeeded() ? 100 : m_percent);
    m_window.setUpdateRuns(false);
}

void ViewController::deviceDidBecomeIdle()
{
    if (m_rebuildAfterUpdate)
        getDeviceConnected();
}

void ViewController::showConnection(Connection state, StatusTone tone)
{
    showStatus(m_controls.connectText, vorn::texts::ofConnection(state, m_session->port()->name()),
               tone);
}
