#pragma once

#include "platform/SerialDeviceRegistry.h"
#include "serial/ORSSerialPortDelegate.h"

#include <QByteArrayView>
#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class ORSSerialPort;
class ORSSerialPortPrivate;

using ORSSerialPortPtr = std::shared_ptr<ORSSerialPort>;

// One serial device: opens it, configures the line, reads and writes, sets and polls the modem
// lines, matches packets, and reports every event to a delegate.
//
// Threads: the port is made and destroyed on the main thread; every other method may be called from
// any thread. Delegate methods and change signals arrive on the main thread, through the event loop
// when the cause was elsewhere. Reading, pin polling and closing run on a background thread of the
// port's own while it is open; matching runs on a private serial queue.
//
// Failures go to the delegate's serialPortDidEncounterError() with their errno; they are dropped if
// the delegate does not implement it.
class ORSSerialPort : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool allowsNonStandardBaudRates READ allowsNonStandardBaudRates WRITE
                   setAllowsNonStandardBaudRates)
    Q_PROPERTY(quint32 baudRate READ baudRate WRITE setBaudRate NOTIFY lineSettingsChanged)
    Q_PROPERTY(uint numberOfStopBits READ numberOfStopBits WRITE setNumberOfStopBits NOTIFY
                   lineSettingsChanged)
    Q_PROPERTY(uint numberOfDataBits READ numberOfDataBits WRITE setNumberOfDataBits NOTIFY
                   lineSettingsChanged)
    Q_PROPERTY(uint parity READ parity WRITE setParity NOTIFY lineSettingsChanged)
    Q_PROPERTY(bool shouldEchoReceivedData READ shouldEchoReceivedData WRITE
                   setShouldEchoReceivedData NOTIFY lineSettingsChanged)
    Q_PROPERTY(bool usesRTSCTSFlowControl READ usesRTSCTSFlowControl WRITE setUsesRTSCTSFlowControl
                   NOTIFY lineSettingsChanged)
    Q_PROPERTY(bool usesDTRDSRFlowControl READ usesDTRDSRFlowControl WRITE setUsesDTRDSRFlowControl
                   NOTIFY lineSettingsChanged)
    Q_PROPERTY(bool usesDCDOutputFlowControl READ usesDCDOutputFlowControl WRITE
                   setUsesDCDOutputFlowControl NOTIFY lineSettingsChanged)
    Q_PROPERTY(bool RTS READ RTS WRITE setRTS NOTIFY RTSChanged)
    Q_PROPERTY(bool DTR READ DTR WRITE setDTR NOTIFY DTRChanged)
    Q_PROPERTY(bool CTS READ CTS NOTIFY CTSChanged)
    Q_PROPERTY(bool DSR READ DSR NOTIFY DSRChanged)
    Q_PROPERTY(bool DCD READ DCD NOTIFY DCDChanged)
    Q_PROPERTY(int fileDescriptor READ fileDescriptor NOTIFY fileDescriptorChanged)
    Q_PROPERTY(bool open READ isOpen NOTIFY fileDescriptorChanged)
    Q_PROPERTY(QString path READ path CONSTANT)
    Q_PROPERTY(QString name READ name CONSTANT)

public:
    // A port for the device with this callout or dial-in path, or null when there is none.
    static ORSSerialPortPtr serialPortWithPath(const QString &path);
    // A new port for the device, or null for no device.
    static ORSSerialPortPtr serialPortWithDevice(const vorn::SerialDeviceHandle &device);
    // A new port for the device, which must not be null. Its path is the callout path.
    explicit ORSSerialPort(const vorn::SerialDeviceHandle &device);
    ~ORSSerialPort() override;

    // The live port with this path that was made first, or null. Main thread only.
    static ORSSerialPort *existingPortWithPath(const QString &path);

    // The device in the device registry with this callout or dial-in path, or null.
    static vorn::SerialDeviceHandle deviceFromBSDPath(const QString &path);
    // A string property of a device ("IOCalloutDevice", "IODialinDevice", "IOTTYDevice",
    // "IOTTYBaseName", "IOTTYSuffix", "IOSerialBSDClientType"); null when it has none of that key.
    static QString stringPropertyOf(const vorn::SerialDeviceHandle &device, const QString &key);
    static QString bsdCalloutPathFromDevice(const vorn::SerialDeviceHandle &device)
    {
        return stringPropertyOf(device, QStringLiteral("IOCalloutDevice"));
    }
    static QString bsdDialinPathFromDevice(const vorn::SerialDeviceHandle &device)
    {
        return stringPropertyOf(device, QStringLiteral("IODialinDevice"));
    }
    static QString baseNameFromDevice(const vorn::SerialDeviceHandle &device)
    {
        return stringPropertyOf(device, QStringLiteral("IOTTYBaseName"));
    }
    static QString serviceTypeFromDevice(const vorn::SerialDeviceHandle &device)
    {
        return stringPropertyOf(device, QStringLiteral("IOSerialBSDClientType"));
    }
    static QString modemNameFromDevice(const vorn::SerialDeviceHandle &device)
    {
        return stringPropertyOf(device, QStringLiteral("IOTTYDevice"));
    }
    static QString suffixFromDevice(const vorn::SerialDeviceHandle &device)
    {
        return stringPropertyOf(device, QStringLiteral("IOTTYSuffix"));
    }

    // Opens the device exclusively and configures the line. Reports EBUSY if another process has it
    // and ENOTTY if the path is not a terminal. No effect on a port that is open or still closing.
    void open();
    // Starts to close and returns true at once; isOpen() shows when the port is closed. Waiting
    // output is still sent, but is discarded when it does not move for a second.
    bool close();
    bool isOpen() const { return fileDescriptor() != 0; }
    // Notifies the delegate that the device is gone, waits for it, and closes the port.
    void cleanupAfterSystemRemoval();
    [[deprecated("never intended to be called")]] void cleanup();

    // Writes all bytes, blocking until the line has accepted them. False if the port is not open or
    // closes meanwhile, and if a write fails; only the last is reported.
    bool sendData(QByteArrayView data);

    // Sends the request, or queues it behind the pending one, and returns when that is done. False
    // if the write failed; the request then stays pending until its time-out. Must not be called on
    // the port's own request handling queue.
    bool sendRequest(const ORSSerialRequestPtr &request);
    // Returns at once. A request in flight cannot be cancelled.
    void cancelQueuedRequest(const ORSSerialRequestPtr &request);
    void cancelAllQueuedRequests();
    // The request in flight, or null; the requests behind it, oldest first.
    ORSSerialRequestPtr pendingRequest() const;
    QList<ORSSerialRequestPtr> queuedRequests() const;

    // Starts (stops) reporting packets. Waits until earlier bytes are matched, so must not be
    // called by a descriptor's evaluator.
    void startListeningForPacketsMatchingDescriptor(const ORSSerialPacketDescriptorPtr &descriptor);
    void stopListeningForPacketsMatchingDescriptor(const ORSSerialPacketDescriptorPtr &descriptor);
    QList<ORSSerialPacketDescriptorPtr> packetDescriptors() const;

    // Sets the receiver of all events, held weakly; null for none. The pointer must be to the
    // delegate's own class, which shows the methods that it implements. The delegate must be
    // destroyed on the main thread.
    template <std::derived_from<ORSSerialPortDelegate> Delegate>
    requires(!std::is_abstract_v<Delegate>) void setDelegate(Delegate *delegate)
    {
        setDelegate(delegate, ORSSerialPortDelegate::implementedBy<Delegate>());
    }
    void setDelegate(std::nullptr_t);
    // Null when there is none or it is gone. Main thread only.
    ORSSerialPortDelegate *delegate() const;

    vorn::SerialDeviceHandle IOKitDevice() const;
    QString path() const;
    QString name() const;
    QString description() const { return name(); }
    // The number of the open terminal's descriptor, 0 when closed. For identification, not for use.
    int fileDescriptor() const;

    // Different port objects are equal if their paths are.
    bool isEqual(const ORSSerialPort &other) const { return path() == other.path(); }
    size_t hash() const { return qHash(path()); }

    bool allowsNonStandardBaudRates() const;
    void setAllowsNonStandardBaudRates(bool allows);
    // Bits per second. Every call reaches the line, even with the current rate.
    quint32 baudRate() const;
    void setBaudRate(quint32 baudRate);
    uint numberOfStopBits() const;
    void setNumberOfStopBits(uint numberOfStopBits);
    uint numberOfDataBits() const;
    void setNumberOfDataBits(uint numberOfDataBits);
    // 0 none, 1 odd, 2 even; anything else is stored as 0.
    uint parity() const;
    void setParity(uint parity);
    bool shouldEchoReceivedData() const;
    void setShouldEchoReceivedData(bool echo);

    // Changing a flow control closes an open port, which is not opened again.
    bool usesRTSCTSFlowControl() const;
    void setUsesRTSCTSFlowControl(bool uses);
    bool usesDTRDSRFlowControl() const;
    void setUsesDTRDSRFlowControl(bool uses);
    bool usesDCDOutputFlowControl() const;
    void setUsesDCDOutputFlowControl(bool uses);

    // Output lines: the requested state, applied to the device while the port is open.
    bool RTS() const;
    void setRTS(bool on);
    bool DTR() const;
    void setDTR(bool on);
    // Input lines as polled last, every 10 ms while the port is open.
    bool CTS() const;
    bool DSR() const;
    bool DCD() const;

signals:
    void pendingRequestChanged();
    void requestsQueueChanged();
    void lineSettingsChanged();
    void RTSChanged();
    void DTRChanged();
    void CTSChanged();
    void DSRChanged();
    void DCDChanged();
    void fileDescriptorChanged();
    void packetDescriptorsAndBuffersChanged();

private:
    friend class ORSSerialPortPrivate;
    void setDelegate(ORSSerialPortDelegate *delegate, ORSSerialPortDelegate::Implements implements);

    const std::shared_ptr<ORSSerialPortPrivate> d;
};
