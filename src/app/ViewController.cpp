#include "app/ViewController.h"

#include "app/StatusTexts.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"
#include "update/FirmwareImage.h"

#include <QLoggingCategory>

#include <unistd.h>

#include <algorithm>

using vorn::Cause;
using vorn::currentTitle;
using vorn::explain;
using vorn::FirmwareSection;
using vorn::GlobalQueue;
using vorn::MainQueue;
using vorn::MainWindow;
using vorn::setTitle;
using vorn::texts::kClose;
using vorn::texts::kDeviceNamePrefix;
using vorn::texts::kNoDevice;
using vorn::texts::kOpen;

namespace {

Q_LOGGING_CATEGORY(logController, "vorn.app")

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

ViewController::ViewController(MainWindow &window, const vorn::PackageLocation &packages,
                               const vorn::BootParameters &parameters)
    : m_window(window), m_controls(vorn::TaggedControls::below(window.centralWidget())),
      m_log(window), m_connection(window, m_controls, m_log),
      m_firmware(window, m_controls, m_log, packages),
      m_update(window, m_controls, m_log, m_notifications), m_parameters(parameters)
{
    logSettings(packages);
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
    if (::geteuid() == 0)
        m_update.warn(explain(Cause::RunsAsRoot));
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
    wire(m_controls.filePopUpBtn.get(), &QComboBox::activated, &m_update,
         &vorn::UpdateSection::forgetRefusal);
    wire(m_controls.devPopUpBtn.get(), &QComboBox::activated, this,
         &ViewController::devHandlePopBtn);
}

void ViewController::logSettings(const vorn::PackageLocation &packages)
{
    m_log.addSetting(tr("Package server: %1")
                         .arg(packages.isConfigured() ? packages.url().authority() : tr("none")));
    m_log.addSetting(tr("Line: %1 baud; limits: %2 s, %3 s while erasing")
                         .arg(m_parameters.baudRate)
                         .arg(vorn::secondsText(m_parameters.answerLimit),
                              vorn::secondsText(m_parameters.eraseLimit)));
}

void ViewController::setSerialPort(const ORSSerialPortPtr &port)
{
    if (port == serialPort())
        return;
    if (m_session)
        m_session->end();
    forgetPress();
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
        m_update.setDevice(port->name());
        m_connection.showChosen(*port, ports);
        break;
    }
    if (!m_session) {
        m_connection.showNoDevice(ports);
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
    if (m_session && devicePrefix(*m_session->port()) != title)
        m_connection.showChoiceIgnored(*m_session->port());
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
        closeSerialPort();
}

void ViewController::closeSerialPort()
{
    forgetPress();
    m_session->close();
}

void ViewController::openSerialPort()
{
    if (!m_session->open()) {
        setTitle(m_controls.openBtn, kOpen);
        m_connection.showOpenFailed(*m_session->port(), m_session->portError());
        return;
    }
    deviceDidReopen();
    m_update.queryDidBegin();
    m_firmware.deviceDidOpen();
}

void ViewController::deviceDidReopen()
{
    setTitle(m_controls.openBtn, kClose);
    m_connection.showOpened(*m_session->port(), m_session->hasItsSpeed(), m_session->portError());
}

void ViewController::deviceDidClose(bool onRequest)
{
    forgetPress();
    setTitle(m_controls.openBtn, kOpen);
    m_connection.showClosed(*m_session->port(), onRequest);
}

void ViewController::deviceDoesNotClose()
{
    setTitle(m_controls.openBtn, kClose);
    m_connection.showCloseFailed(*m_session->port());
}

void ViewController::send()
{
    const QString imagePath = m_firmware.imagePath();
    if (isUpdating() || (m_checking && m_checkedImage == imagePath))
        return;
    // Another file was chosen, since that of an earlier press hangs.
    forgetPress();
    if (!m_session)
        return m_update.refuse(vorn::texts::kNoDeviceSelected, explain(Cause::NoDevice));
    if (!m_session->isOpen())
        return m_update.refuse(vorn::texts::kDeviceNotOpened, explain(Cause::DeviceNotOpen));
    if (!m_firmware.offersFile())
        return m_update.refuse(vorn::texts::kNoFirmwareSelected, explain(Cause::NoImageChosen));

    // In the background, since a network file system may hang.
    m_checking.emplace();
    m_checkedImage = imagePath;
    m_update.showCheck(tr("Checking the firmware file."));
    GlobalQueue::instance().post([this, imagePath, token = m_checking->token()] {
        vorn::UpdateResult check;
        check.step = vorn::UpdateStep::ReadImage;
        // A listed file that nobody chose counts as none only once the device is ready for it.
        if (!imagePath.isNull())
            check.failure = vorn::checkFirmwareImage(imagePath);
        MainQueue::instance().post(token, [this, imagePath, check] {
            m_checking.reset();
            startUpdate(imagePath, check);
        });
    });
}

void ViewController::forgetPress()
{
    if (!m_checking)
        return;
    m_checking.reset();
    m_update.showCheck({});
    // Later, since the device may be telling that it has closed.
    QMetaObject::invokeMethod(this, &ViewController::rebuildIfDue, Qt::QueuedConnection);
}

void ViewController::rebuildIfDue()
{
    if (m_rebuildAfterUpdate && !isUpdating() && !m_checking)
        getDeviceConnected();
}

void ViewController::startUpdate(const QString &imagePath, const vorn::UpdateResult &check)
{
    if (!check.succeeded()) {
        m_update.refuse(vorn::texts::ofUpdateEnd(check).constFirst(), vorn::explainUpdate(check));
        rebuildIfDue();
        return;
    }
    m_update.begin(*m_session, imagePath);
    m_session->startUpdate(imagePath);
}

void ViewController::serialPortsWereConnected(const QVariantMap &userInfo)
{
    const auto ports = userInfo.value(ORSConnectedSerialPortsKey).value<ORSSerialPortList>();
    qCInfo(logController) << "Ports were connected:" << namesOf(ports);
    m_connection.portsWereConnected(ports);
    postUserNotificationForConnectedPorts(ports);
}

void ViewController::serialPortsWereDisconnected(const QVariantMap &userInfo)
{
    const auto ports = userInfo.value(ORSDisconnectedSerialPortsKey).value<ORSSerialPortList>();
    qCInfo(logController) << "Ports were disconnected:" << namesOf(ports);
    m_connection.portsWereDisconnected(ports);
    const bool isCurrentGone = std::any_of(ports.begin(), ports.end(), [&](const auto &port) {
        return m_session && port->isEqual(*m_session->port());
    });
    // Nobody asked for this closing, so not by the session.
    if (isCurrentGone && isUpdating())
        m_session->port()->close();
    if (isCurrentGone)
        forgetPress();
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
    if (isUpdating() || m_checking)
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
    m_update.queryDidEnd(*m_session, result);
    m_firmware.versionQueryDidEnd();
}

void ViewController::updateDidProgress(const vorn::UpdateProgress &progress)
{
    m_update.showProgress(progress);
}

void ViewController::updateDidEnd(const vorn::UpdateResult &result)
{
    m_update.end(result);
}

void ViewController::deviceDidBecomeIdle()
{
    rebuildIfDue();
}
