#pragma once

#include "platform/SerialQueue.h"
#include "serial/ORSSerialPort.h"
#include "update/BootLoaderLink.h"

#include <QByteArrayView>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>

namespace vorn {

// Starts version queries and updates, one at a time, each behind the pulse on RTS that resets the
// device into its boot loader. Main thread only; the sequences run in the background and tell the
// observer.
class Updater
{
public:
    explicit Updater(UpdateObserver *observer, const UpdateTimings &timings = {});
    // A sequence that still runs ends without a word.
    ~Updater();
    Updater(const Updater &) = delete;
    Updater &operator=(const Updater &) = delete;

    // Asks the device on this open port for its version, unless an update runs.
    void getTargetVersion(const ORSSerialPortPtr &port);
    // Updates the device on this open port with the file; takes over from a query that still waits.
    // Does nothing while an update runs. `imagePath` is null when no file was chosen.
    void startUpdate(const ORSSerialPortPtr &port, const QString &imagePath);
    bool isUpdating() const { return *m_updating; }

    // The device's model code, -1 until it told. Any thread.
    qint32 targetVersion() const { return *m_targetVersion; }

    // What the port delivers.
    void serialPortDidReceiveData(QByteArrayView data) { m_buffer->receive(data); }
    void portWasClosed() { m_buffer->linkWasLost(); }

private:
    using Sequence = std::function<void(BootLoaderLink link)>;
    void resetDeviceAndRun(const ORSSerialPortPtr &port, Sequence sequence);

    const WeakDelegate<UpdateObserver> m_observer;
    const UpdateTimings m_timings;
    // Runs the sequences, so that an abandoned one has let go of the line when its successor
    // starts.
    const std::shared_ptr<SerialQueue> m_line = std::make_shared<SerialQueue>();
    const std::shared_ptr<ReceiveBuffer> m_buffer = std::make_shared<ReceiveBuffer>();
    const std::shared_ptr<std::atomic<qint32>> m_targetVersion =
        std::make_shared<std::atomic<qint32>>(-1);
    const std::shared_ptr<std::atomic<bool>> m_updating =
        std::make_shared<std::atomic<bool>>(false);
};

} // namespace vorn
