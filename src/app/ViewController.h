#pragma once

#include "app/Controls.h"
#include "app/UpdateTexts.h"
#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageDownload.h"
#include "platform/DesktopNotifications.h"
#include "serial/ORSSerialPort.h"
#include "serial/ORSSerialPortManager.h"
#include "update/DeviceSession.h"
#include "window/MainWindow.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

// The controller of the program's one window: keeps the current port and the choices, wires the
// controls, keeps the device list in step with the system, opens and closes the port, and shows the
// texts. Updates, the firmware folder and downloads are done by classes of their own. Main thread
// only.
class ViewController final : public QObject,
                             public vorn::DeviceSessionObserver,
                             private vorn::PackageObserver
{
    Q_OBJECT

public:
    ViewController(vorn::MainWindow &window, vorn::PackageLocation packages,
                   const vorn::BootParameters &parameters = vorn::kVornBoot);
    ~ViewController() override;

    // Start-up, once: finds and wires the controls, subscribes to the ports' coming and going,
    // fills both lists.
    void viewDidLoad();

    // The current port, null for none. Another port than the current one closes that one.
    ORSSerialPortPtr serialPort() const { return m_session ? m_session->port() : nullptr; }
    void setSerialPort(const ORSSerialPortPtr &port);

    // The device's model code, -1 until it told.
    qint32 targetVersion() const { return m_targetVersion; }

    // Rebuilds the device list and chooses the first device whose name begins "usbserial-".
    void getDeviceConnected();

    // Actions of the controls.
    void openHandleBtn();
    void devHandlePopBtn();
    void fileHandlePopBtn();
    void getFirmWare();
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

    // vorn::PackageObserver
    void showText(const QString &text) override;
    void packageProgress(Phase phase, qint64 received, qint64 total) override;
    void packageEnded(Outcome outcome, const vorn::PackageProblem &problem) override;

    void wireControls();
    void announce(const QString &title, const QString &text, const ORSSerialPortList &ports);
    void openSerialPort();
    void closeSerialPort();
    void showOpen();
    bool isUpdating() const { return m_session && m_session->isUpdating(); }
    void refuseUpdate(const QString &text);
    void showConnection(vorn::texts::Connection state,
                        vorn::StatusTone tone = vorn::StatusTone::Neutral);
    void showNoDevice();
    void readFirmWareInBackground();
    void refillFirmwareList(const QStringList &titles);

    vorn::MainWindow &m_window;
    vorn::Controls m_controls;
    vorn::DesktopNotifications m_notifications;
    const bool m_hasPackageServer;
    const std::shared_ptr<vorn::FirmwareLibrary> m_library;
    vorn::PackageDownload m_download;
    const vorn::BootParameters m_parameters;
    ORSSerialPortManager *m_serialPortManager = nullptr;
    std::unique_ptr<vorn::DeviceSession> m_session; // the current port's; null without one
    qint32 m_targetVersion = -1;
    // The list follows the device half a second after the opening, and from then on whenever a
    // query tells another model.
    QTimer m_refill;
    qint32 m_listedVersion = -1;
    QString m_fileName; // null while none was chosen
    bool m_rebuildAfterUpdate = false;
    int m_percent = 0;
};
