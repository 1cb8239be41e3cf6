#pragma once

#include "app/Causes.h"
#include "app/LogSection.h"
#include "app/StatusTexts.h"
#include "app/TaggedControls.h"
#include "platform/Lifetime.h"
#include "serial/ORSSerialPortManager.h"
#include "window/MainWindow.h"

#include <QHash>
#include <QObject>

#include <chrono>
#include <functional>
#include <optional>

namespace vorn {

// The window's connection status: how the current port stands, and in the details line why it does
// not open, or what keeps another device out of the list. Main thread only.
class ConnectionSection final : public QObject
{
    Q_OBJECT

public:
    // All outlive the object.
    ConnectionSection(MainWindow &window, const TaggedControls &controls, LogSection &log);

    void showNoDevice(const ORSSerialPortList &ports);
    // A device was chosen by the program, among these ports.
    void showChosen(const ORSSerialPort &port, const ORSSerialPortList &ports);
    // In these two, `code` is the errno, 0 when none was told.
    void showOpened(const ORSSerialPort &port, bool hasItsSpeed, int code);
    void showOpenFailed(const ORSSerialPort &port, int code);
    void showClosed(const ORSSerialPort &port, bool onRequest);
    void showCloseFailed(const ORSSerialPort &port);
    // The user chose from the device list, which changed nothing.
    void showChoiceIgnored(const ORSSerialPort &port);

    void portsWereConnected(const ORSSerialPortList &ports);
    void portsWereDisconnected(const ORSSerialPortList &ports);

private:
    void show(texts::Connection state, const ORSSerialPort &port, StatusTone tone);
    void showDetails(const Explanation &why);
    void findOut(std::function<Explanation()> facts);

    MainWindow &m_window;
    const TaggedControls &m_controls;
    LogSection &m_log;
    QHash<QString, std::chrono::steady_clock::time_point> m_pluggedIn; // by name
    // The device that was unplugged last, if soon after it was plugged in.
    struct Vanished
    {
        QString name;
        std::chrono::milliseconds after;
    };
    std::optional<Vanished> m_vanished;
    quint64 m_shown = 0; // counts what the details line showed
    Lifetime m_lifetime;
};

} // namespace vorn
