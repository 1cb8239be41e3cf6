#pragma once

#include "app/ConnectionSection.h"
#include "app/FirmwareSection.h"
#include "app/LogSection.h"
#include "app/TaggedControls.h"
#include "app/UpdateSection.h"
#include "platform/DesktopNotifications.h"
#include "serial/ORSSerialPort.h"
#include "serial/ORSSerialPortManager.h"
#include "update/DeviceSession.h"
#include "window/MainWindow.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>

// The controller of the program's one window: wires the controls, keeps the device list in step
// with the system, opens and closes the chosen device, and updates it. How that goes is shown by
// the sections, one for each part of the window; the firmware list and downloads are
// FirmwareSection's altogether. Main thread only.
class ViewController final : public QObject, public vorn::DeviceSessionObserver
{
    Q_OBJECT

public:
    ViewController(vorn::MainWindow &window, const vorn::PackageLocation &packages,
                   const vorn::BootParameters &parameters = vorn::kVornBoot);
    ~ViewController() override;

    // Start-up, once: finds and wires the controls, subscribes to the ports' coming and going,
    // fills both lists.
    void viewDidLoad();

    // The current port, null for none. Another port than the current one closes that one.
    ORSSerialPortPtr serialPort() const { return m_session ? m_session->port() : nullptr; }
    void setSerialPort(const ORSSerialPortPtr &port);

    // The model code that a device reported last, -1 before the first did.
    qint32 targetVersion() const { return m_firmware.targetVersion(); }

    // Rebuilds the device list and chooses the first device whose name begins "usbserial-".
    void getDeviceConnected();

    // Actions of the controls.
    void openHandleBtn();
    void devHandlePopBtn();
    void send();

    // Ports that came and went.
    void serialPortsWereConnected(const QVariantMap &userInfo);
    void serialPortsWereDisconnected(const QVariantMap &userInfo);
    // Desktop notifications, and the device list rebuilt.
    void postUserNotificationForConnectedPorts(const ORSSerialPortList &ports);
    void postUserNotificationForDisconnectedPorts(const ORSSerialPortList &ports);

private:
    // vorn::DeviceSessionObserver
    void deviceDidReopen() override;
    void deviceDidClose(bool onRequest) override;
    void deviceDoesNotClose() override;
    void deviceDidReportError(const ORSSerialPortError &error) override;
    void targetVersionDidArrive(qint32 targetVersion) override;
    void versionQueryDidEnd(const vorn::UpdateResult &result) override;
    void updateDidProgress(const vorn::UpdateProgress &progress) override;
    void updateDidEnd(const vorn::UpdateResult &result) override;
    void deviceDidBecomeIdle() override;

    void wireControls();
    void announce(const QString &title, const QString &text, const ORSSerialPortList &ports);
    void openSerialPort();
    void closeSerialPort();
    // Drops a press of the update button whose image is still being checked.
    void forgetPress();
    // Rebuilds the device list if a device came or went while that had to wait.
    void rebuildIfDue();
    void startUpdate(const QString &imagePath, const vorn::UpdateResult &check);
    bool isUpdating() const { return m_session && m_session->isUpdating(); }
    void logSettings(const vorn::PackageLocation &packages);

    vorn::MainWindow &m_window;
    const vorn::TaggedControls m_controls;
    vorn::DesktopNotifications m_notifications;
    vorn::LogSection m_log;
    vorn::ConnectionSection m_connection;
    vorn::FirmwareSection m_firmware;
    vorn::UpdateSection m_update;
    const vorn::BootParameters m_parameters;
    ORSSerialPortManager *m_serialPortManager = nullptr;
    std::unique_ptr<vorn::DeviceSession> m_session; // the current port's; null without one
    // Set while the image of a pressed update is checked; resetting it drops the press.
    std::optional<vorn::Lifetime> m_checking;
    QString m_checkedImage; // that image's path
    bool m_rebuildAfterUpdate = false;
};
