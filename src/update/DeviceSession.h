#pragma once

#include "platform/SerialQueue.h"
#include "serial/ORSSerialPort.h"
#include "update/BootParameters.h"
#include "update/Transcript.h"
#include "update/UpdateRun.h"

#include <QString>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>

namespace vorn {

class ReceiveBuffer;

// Observes a device session, on the main thread. Every method is optional, and each may destroy or
// reopen the session.
class DeviceSessionObserver
{
public:
    // The port was reopened after the system woke up. (open() returns its own result.)
    virtual void deviceDidReopen() {}
    // The port has closed, either on request, by close(), or by itself.
    virtual void deviceDidClose(bool onRequest) { Q_UNUSED(onRequest) }
    // The port has not closed within two seconds of close(). It may still do so.
    virtual void deviceDoesNotClose() {}
    // The system reported an error on the port.
    virtual void deviceDidReportError(const ORSSerialPortError &error) { Q_UNUSED(error) }

    // The device reported its version, which is its model code.
    virtual void targetVersionDidArrive(qint32 targetVersion) { Q_UNUSED(targetVersion) }
    // The version query started by open() has ended. Not called when an update took over from it.
    virtual void versionQueryDidEnd(const UpdateResult &result) { Q_UNUSED(result) }
    virtual void updateDidProgress(const UpdateProgress &progress) { Q_UNUSED(progress) }
    // The next update may start at once.
    virtual void updateDidEnd(const UpdateResult &result) { Q_UNUSED(result) }
    // No sequence uses the line any more, including the reset pulse that follows an update.
    virtual void deviceDidBecomeIdle() {}

protected:
    ~DeviceSessionObserver() = default;
};

// One device on a serial port that no other session uses at the same time: opens and closes it,
// queries its version, updates it, and notices when it is unplugged. Sessions share no state, so
// any number can run side by side.
//
// Main thread only. Sequences (a version query or an update) run one at a time on a background
// thread and never block the main thread.
class DeviceSession final : public ORSSerialPortDelegate
{
public:
    using Clock = std::chrono::steady_clock;

    // Becomes the port's delegate. The observer must outlive the session.
    DeviceSession(ORSSerialPortPtr port, DeviceSessionObserver &observer,
                  const BootParameters &parameters = kVornBoot);
    // Closes the port. A running sequence ends without notifying the observer.
    ~DeviceSession() override;
    DeviceSession(const DeviceSession &) = delete;
    DeviceSession &operator=(const DeviceSession &) = delete;

    const ORSSerialPortPtr &port() const { return m_port; }
    // True from a successful open() or deviceDidReopen() until deviceDidClose().
    bool isOpen() const { return m_isOpen; }
    // Whether the open port runs at the family's speed, as far as can be told. An adapter that
    // cannot may be open at another one.
    bool hasItsSpeed() const;
    // The errno of the port's latest error since the latest open() or startUpdate(), 0 without one.
    // That an open line has no modem lines does not count: it serves as well.
    int portError() const { return m_portError; }

    // Opens the port at the family's baud rate, resets the device into its boot loader and queries
    // its version. Returns false if the port cannot be opened, after reporting the error to the
    // observer, or if the session is still open or closing. If the port has closed and its sequence
    // has not ended yet, the observer is first told of that end.
    bool open();
    // Starts closing the port; a running sequence ends as soon as it has closed.
    void close();
    // Closes the port for good. If a sequence is running, the observer is told before this returns
    // that it ended because the port closed (with the frame of the last progress). Nothing is
    // reported afterwards.
    void end();

    // Updates the device with the image file, taking over from a version query in progress. Does
    // nothing while an update is running. A null path means that no file was chosen.
    void startUpdate(const QString &imagePath);
    // The same with an image that is chosen once the device has reported its model.
    void startUpdate(ImageReader readImage);
    // Ends a running sequence between two frames, lowers RTS and closes the port. The observer is
    // told of the end (UpdateFailureKind::Interrupted) and of the closing. While the device accepts
    // no bytes, neither happens.
    void interrupt();
    bool isUpdating() const { return m_running == Running::Update; }

    // The transcript of the latest update, or of the latest version query if there was no update
    // yet; empty before the first sequence. It may still grow.
    std::shared_ptr<const Transcript> transcript() const { return m_transcript; }
    // When bytes last arrived from the device; the clock's epoch if none have.
    Clock::time_point lastHeard() const { return m_lastHeard; }

    // ORSSerialPortDelegate
    void serialPortWasRemovedFromSystem(ORSSerialPort &serialPort) override;
    void serialPortDidReceiveData(ORSSerialPort &serialPort, const QByteArray &data) override;
    void serialPortDidEncounterError(ORSSerialPort &serialPort,
                                     const ORSSerialPortError &error) override;
    void serialPortWasOpened(ORSSerialPort &serialPort) override;
    void serialPortWasClosed(ORSSerialPort &serialPort) override;

private:
    enum class Running { Nothing, VersionQuery, Update };
    class Relay;
    using Sequence = std::function<void(DeviceLine &line, Relay &relay)>;

    void getTargetVersion();
    void runSequence(Running which, Sequence sequence);
    void sequenceDidEnd(UpdateResult result);
    void endSequence(UpdateFailureKind why = UpdateFailureKind::PortClosed);
    void noteProgress(const UpdateProgress &progress);
    void letGoOfPort();

    const ORSSerialPortPtr m_port;
    DeviceSessionObserver &m_observer;
    const BootParameters m_parameters;
    // Serial, so that an abandoned sequence has released the line before the next one starts.
    SerialQueue m_sequences;
    // Of the running sequence, or of the last one.
    std::shared_ptr<ReceiveBuffer> m_buffer;
    Running m_running = Running::Nothing;
    UpdateProgress m_progress; // of the running sequence
    std::shared_ptr<Transcript> m_transcript = std::make_shared<Transcript>();
    bool m_hasUpdated = false; // m_transcript is that of an update
    Clock::time_point m_lastHeard{};
    Clock::time_point m_sequenceBegan{};
    Clock::time_point m_stepBegan{}; // when m_progress came to its step
    bool m_isOpen = false;
    int m_portError = 0;
    QTimer m_closeLimit; // active from close() until the port has closed or the limit has passed
    bool m_closing = false;
};

} // namespace vorn
