#include "app/ViewController.h"

#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "platform/GlobalQueue.h"
#include "platform/NotificationCenter.h"
#include "update/FirmwareImage.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;
using vorn::currentTitle;
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
const QString kNoFirmware = QStringLiteral("No firmware selected");
const QString kDeviceNamePrefix = QStringLiteral("usbserial-");

// What a device needs, with some room, to tell its model after the port was opened.
constexpr auto kRefillDelay = 500ms;

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
                               const vorn::BootParameters &parameters)
    : m_window(window), m_hasPackageServer(packages.isConfigured()),
      m_library(std::make_shared<vorn::FirmwareLibrary>(
          [this](qint32, const QStringList &titles) { refillFirmwareList(titles); })),
      m_download(
          std::move(packages), *m_library, [this] { return targetVersion(); }, *this),
      m_parameters(parameters)
{
    m_refill.setSingleShot(true);
    m_refill.setTimerType(Qt::PreciseTimer);
    m_refill.setInterval(kRefillDelay);
    connect(&m_refill, &QTimer::timeout, this, &ViewController::readFirmWareInBackground);
    connect(&m_window, &MainWindow::closePortAnyway, this, &ViewController::closeSerialPort);
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

    vorn::StagingFolder::recoverInterruptedPublish();
    m_library->readFirmWare(targetVersion());
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

    showNoDevice();
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
        showNoDevice();
        setTitle(m_controls.openBtn, kOpen);
    }
}

void ViewController::devHandlePopBtn()
{
    const QString title = currentTitle(m_controls.devPopUpBtn);
    qCInfo(logController).noquote()
        << "Device list:" << m_controls.devPopUpBtn->currentIndex() << title;
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
    const QString title = m_controls.openBtn->text();
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
    showOpen();
    m_refill.start();
}

void ViewController::closeSerialPort()
{
    if (m_session)
        m_session->close();
}

void ViewController::showOpen()
{
    setTitle(m_controls.openBtn, kClose);
    showConnection(Connection::Opened, StatusTone::Good);
}

void ViewController::deviceDidReopen()
{
    showOpen();
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

void ViewController::fileHandlePopBtn()
{
    const QString title = currentTitle(m_controls.filePopUpBtn);
    qCInfo(logController).noquote()
        << "Firmware list:" << m_controls.filePopUpBtn->currentIndex() << title;
    m_fileName = title;
    showStatus(m_controls.perText,
               title == kNoFirmware ? vorn::texts::kNoFirmwareSelected
                                    : vorn::texts::kFirmwareSelected,
               StatusTone::Neutral);
}

void ViewController::send()
{
    if (isUpdating())
        return;
    if (!m_session)
        return refuseUpdate(vorn::texts::kNoDeviceSelected);
    if (!m_session->isOpen())
        return refuseUpdate(vorn::texts::kDeviceNotOpened);
    // A list that was never filled offers nothing to choose either.
    const QString firmware = currentTitle(m_controls.filePopUpBtn);
    if (firmware.isNull() || firmware == kNoFirmware)
        return refuseUpdate(vorn::texts::kNoFirmwareSelected);

    QString imagePath;
    if (!m_fileName.isNull()) {
        imagePath =
            QDir(vorn::cachesDirectory()).filePath(m_download.curDirName() + u'/' + m_fileName);
        if (const auto failure = vorn::checkFirmwareImage(imagePath)) {
            qCWarning(logController).noquote() << vorn::texts::logLineOf(failure);
            return refuseUpdate(vorn::texts::ofImageFailure(failure));
        }
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
    if (isCurrentGone && isUpdating())
        m_session->close();
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
    qCWarning(logController).noquote()
        << "Serial port" << m_session->port()->description()
        << "encountered an error:" << error.description << '(' << error.code << ')' << error.path;
}

void ViewController::targetVersionDidArrive(qint32 targetVersion)
{
    m_targetVersion = targetVersion;
}

void ViewController::versionQueryDidEnd(const vorn::UpdateResult &result)
{
    for (const QString &text : vorn::texts::ofVersionQueryEnd(result))
        showStatus(m_controls.updateText, text, StatusTone::Bad);
    // Before that, the list is filled anyway. A choice is only taken away for another model.
    if (!m_refill.isActive() && m_targetVersion != m_listedVersion)
        readFirmWareInBackground();
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
    qCInfo(logController).noquote() << vorn::texts::logLineOf(result);
    // Otherwise a failure during the erase leaves the bar indeterminate.
    m_window.showUpdateProgress(result.succeeded() ? 100 : m_percent);
    m_window.setUpdateRuns(false);
}

void ViewController::deviceDidBecomeIdle()
{
    if (std::exchange(m_rebuildAfterUpdate, false))
        getDeviceConnected();
}

void ViewController::readFirmWareInBackground()
{
    m_listedVersion = m_targetVersion;
    vorn::GlobalQueue::instance().post(
        [library = m_library, version = targetVersion()] { library->readFirmWare(version); });
}

void ViewController::refillFirmwareList(const QStringList &titles)
{
    QComboBox *list = m_controls.filePopUpBtn;
    if (!list)
        return;
    list->clear();
    list->addItem(kNoFirmware);
    list->addItems(titles);
}

void ViewController::showConnection(Connection state, StatusTone tone)
{
    showStatus(m_controls.connectText, vorn::texts::ofConnection(state, m_session->port()->name()),
               tone);
}

void ViewController::showNoDevice()
{
    showStatus(m_controls.connectText, vorn::texts::kNoDeviceSelected, StatusTone::Neutral);
}

void ViewController::getFirmWare()
{
    m_window.showDownloadBusy();
    m_download.sendRequest();
}

void ViewController::showText(const QString &text)
{
    showStatus(m_controls.perText, text, StatusTone::Neutral);
}

void ViewController::packageProgress(Phase phase, qint64 received, qint64 total)
{
    if (phase == Phase::Receiving && total > 0)
        m_window.showDownloadProgress(
            static_cast<int>(std::min(100 * received / total, qint64{100})));
    else
        m_window.showDownloadBusy();
}

void ViewController::packageEnded(Outcome outcome, const vorn::PackageProblem &problem)
{
    if (problem)
        qCWarning(logController).noquote() << "No package was installed:" << problem.text;
    setStatusTone(m_controls.perText,
                  outcome == Outcome::Failed ? StatusTone::Bad : StatusTone::Good);
    if (!m_download.isRunning())
        m_window.hideDownloadProgress();
}
