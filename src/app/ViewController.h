#pragma once

#include "app/Controls.h"
#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageDownload.h"
#include "platform/DesktopNotifications.h"
#include "serial/ORSSerialPort.h"
#include "serial/ORSSerialPortManager.h"
#include "update/Updater.h"
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
                             public ORSSerialPortDelegate,
                             public vorn::UpdateObserver,
                             private vorn::PackageObserver,
                             private vorn::FirmwareLibraryObserver
{
    Q_OBJECT

public:
    ViewController(vorn::MainWindow &window, vorn::PackageLocation packages,
                   const vorn::UpdateTimings &timings = {});
    ~ViewController() override;

    // Start-up, once: finds and wires the controls, subscribes to the ports' coming and going,
    // fills both lists.
    void viewDidLoad();

    // The current port, null for none. Another port than the current one closes that one.
    ORSSerialPortPtr serialPort() const { return m_serialPort; }
    void setSerialPort(const ORSSerialPortPtr &port);

    // The device's model code, -1 until it told.
    qint32 targetVersion() const { return m_updater.targetVersion(); }

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

    // ORSSerialPortDelegate
    void serialPortWasRemovedFromSystem(ORSSerialPort &serialPort) override;
    void serialPortDidReceiveData(ORSSerialPort &serialPort, const QByteArray &data) override;
    void serialPortDidEncounterError(ORSSerialPort &serialPort,
                                     const ORSSerialPortError &error) override;

    // vorn::UpdateObserver
    void showUpdateText(const QString &text) override;
    void updateDidBegin() override;
    void updateDidProgress(int percent) override;
    void updateIsErasing() override;
    void updateDidEnd(const vorn::UpdateResult &result) override;
    void versionQueryDidEnd() override;

private:
    // vorn::PackageObserver
    void packageResponseDidArrive(qint64 total) override;
    void packageDidProgress(qint64 received, qint64 total) override;
    void packageWillUnpack() override;
    void packageIsUpToDate() override;
    void packageDidFail(const vorn::PackageProblem &problem, bool showsInStatus) override;
    void packageWasInstalled() override;
    void firmwareFolderDidChange() override;

    // vorn::FirmwareLibraryObserver
    void firmwareListDidChange(const QStringList &files) override;

    void wireControls();
    void announce(const QString &title, const QString &text, const ORSSerialPortList &ports);
    void openSerialPort();
    void closeSerialPort();
    void portOpenChanged();
    void showClosing();
    void refuseUpdate(const QString &text);
    void showConnection(const QString &text, vorn::Tone tone = vorn::Tone::Neutral);
    void readFirmWareInBackground();
    void showDownload(const QString &text);
    void showDownloadProgress(qint64 received, qint64 total);
    void endDownload(vorn::Tone tone);

    vorn::MainWindow &m_window;
    vorn::Controls m_controls;
    vorn::DesktopNotifications m_notifications;
    const bool m_hasPackageServer;
    vorn::FirmwareLibrary m_library;
    vorn::Updater m_updater;
    vorn::PackageDownload m_download;
    ORSSerialPortManager *m_serialPortManager = nullptr;
    ORSSerialPortPtr m_serialPort;
    QMetaObject::Connection m_portOpenConnection;

    QString m_fileName; // null while none was chosen
    // From the press of the close button until the port is closed, and how long that may take
    // before the window says that it failed.
    bool m_closing = false;
    QTimer m_closeLimit;
    std::chrono::steady_clock::time_point m_openedAt;
    int m_percent = 0;
};
