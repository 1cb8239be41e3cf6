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

// Hears of a device on the main thread. Every method is optional, and the session may be destroyed
// or opened again in each.
class DeviceSessionObserver
{
public:
    // The system woke up and the port is open again. (open() tells its success itself.)
    virtual void deviceDidReopen() {}
    // The port is closed: because of close(), or by itself.
    virtual void deviceDidClose(bool onRequest) { Q_UNUSED(onRequest) }
    // close() has not closed the port within two seconds. It may still succeed.
    virtual void deviceDoesNotClose() {}
    // The system reported a failure of the port.
    virtual void deviceDidReportError(const ORSSerialPortError &error) { Q_UNUSED(error) }

    // The device's version, which is its model code, came in.
    virtual void targetVersionDidArrive(qint32 targetVersion) { Q_UNUSED(targetVersion) }
    // The query that opening starts has ended; not told of one that an update took over from.
    virtual void versionQueryDidEnd(const UpdateResult &result) { Q_UNUSED(result) }
    virtual void updateDidProgress(const UpdateProgress &progress) { Q_UNUSED(progress) }
    // The next update may start at once.
    virtual void updateDidEnd(const UpdateResult &result) { Q_UNUSED(result) }
    // Nothing runs on the line any more, not even the pulse that follows an update.
    virtual void deviceDidBecomeIdle() {}

protected:
    ~DeviceSessionObserver() = default;
};

// One device on one serial port object, which no other session uses at the time: opens and closes
// it, asks it for its version, updates it, and notices when it goes away. Sessions share nothing;
// several may be at work side by side.
//
// Main thread only. Sequences (a version query or an update) run one at a time on a background
// thread, and none delays the main thread.
class DeviceSession final : public ORSSerialPortDelegate
{
public:
    using Clock = std::chrono::steady_clock;

    // Becomes the port's delegate. The observer outlives the session.
    DeviceSession(ORSSerialPortPtr port, DeviceSessionObserver &observer,
                  const BootParameters &parameters = kVornBoot);
    // Closes the port. What still runs ends without a word.
    ~DeviceSession() override;
    DeviceSession(const DeviceSession &) = delete;
    DeviceSession &operator=(const DeviceSession &) = delete;

    const ORSSerialPortPtr &port() const { return m_port; }
    // From a successful open() or deviceDidReopen() to deviceDidClose().
    bool isOpen() const { return m_isOpen; }
    // Whether the open port runs at the family's speed. An adapter that cannot may be open at
    // another one.
    bool hasItsSpeed() const;

    // Opens the port at the family's speed, resets the device into its boot loader and asks for its
    // version. False when the port cannot be opened, and the observer has heard of the error then,
    // or when the session is open already or its closing was not told yet. A sequence that the
    // closing of the port is about to end is told as ended first.
    bool open();
    // Begins to close the port; a running sequence ends as soon as it is closed.
    void close();
    // Closes the port for good. What still runs is told to the observer as ended by that before
    // this returns (its frame is the one told last), and nothing is told afterwards.
    void end();

    // Updates the device with the file, taking over from a version query that still waits. Does
    // nothing while an update runs. A null path means that no file was chosen.
    void startUpdate(const QString &imagePath);
    bool isUpdating() const { return m_running == Running::Update; }

    // The last update's exchange, or the last version query's while there was no update; empty
    // before the first. It may still grow.
    std::shared_ptr<const Transcript> transcript() const { return m_transcript; }
    // When bytes last arrived from the device; the clock's epoch before the first.
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
    void sequenceDidEnd(const UpdateResult &result);
    void endSequence();
    void noteProgress(const UpdateProgress &progress);
    void letGoOfPort();

    const ORSSerialPortPtr m_port;
    DeviceSessionObserver &m_observer;
    const BootParameters m_parameters;
    // Runs the sequences, so that an abandoned one has let go of the line when the next one starts.
    SerialQueue m_sequences;
    // The running sequence's, or the last one's.
    std::shared_ptr<ReceiveBuffer> m_buffer;
    Running m_running = Running::Nothing;
    UpdateProgress m_progress; // of the running sequence
    std::shared_ptr<Transcript> m_transcript = std::make_shared<Transcript>();
    bool m_hasUpdated = false; // m_transcript is an update's
    Clock::time_point m_lastHeard{};
    Clock::time_point m_sequenceBegan{};
    Clock::time_point m_stepBegan{}; // when m_progress came to its step
    bool m_isOpen = false;
    QTimer m_closeLimit; // runs from close() until the port is closed or the limit is over
    bool m_closing = false;
};

} // namespace vorn
