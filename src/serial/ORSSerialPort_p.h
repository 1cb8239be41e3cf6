#pragma once

#include "platform/MainQueue.h"
#include "platform/SerialQueue.h"
#include "serial/LineSettings.h"
#include "serial/LivePorts.h"
#include "serial/ORSSerialPort.h"
#include "serial/PacketMatcher.h"
#include "serial/RequestQueue.h"
#include "serial/SerialTerminal.h"

#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

// The state of a port that its background jobs share. They own it too, so it outlives the port
// object while one of them runs.
class ORSSerialPortPrivate final : public std::enable_shared_from_this<ORSSerialPortPrivate>,
                                   public vorn::RequestQueueHost
{
public:
    ORSSerialPortPrivate(ORSSerialPort *owner, const vorn::SerialDeviceHandle &itsDevice);

    using DelegateCall = std::function<void(ORSSerialPort &, ORSSerialPortDelegate &)>;

    // The open terminal, or null.
    std::shared_ptr<vorn::SerialTerminal> openTerminal() const;
    // Opens the port if it is closed. The caller holds `opening`.
    void open();
    int openTerminalAtPath();
    void close();
    void setPortOptions();
    void updateModemLines();

    // The delegate's optional methods; none if it is gone. Any thread.
    ORSSerialPortDelegate::Implements implemented() const;
    // Calls the delegate on the main thread if port and delegate still exist by then.
    void postToDelegate(DelegateCall call);
    void callDelegateAndWait(const DelegateCall &call);
    // Emits a change signal on the main thread; at once when already there.
    void emitOnMain(void (ORSSerialPort::*signal)());

    void notifyDelegateOfPosixError(int error)
    {
        notifyDelegateOfPosixErrorWaitingUntilDone(error, false);
    }
    void notifyDelegateOfPosixErrorWaitingUntilDone(int error, bool wait);
    // Reports a failure of the modem lines; missing lines are reported once per opening.
    void notifyOfModemLineError(vorn::SerialTerminal &terminal, int error);

    bool sendData(QByteArrayView data);
    // Passes on the bytes that were read.
    void receiveData(const QByteArray &bytes);
    // Hands them to the delegate in pieces; main thread only.
    void deliverData(const QByteArray &bytes);
    // Looks for packets and responses byte by byte; request handling queue only.
    void matchReceivedData(const QByteArray &data);

    QList<ORSSerialPacketDescriptorPtr> packetDescriptors() const;
    // Request handling queue only.
    void startListening(const ORSSerialPacketDescriptorPtr &descriptor);
    void stopListening(const ORSSerialPacketDescriptorPtr &descriptor);

    void notifyOfRemoval();
    // The terminal was closed with this result.
    void terminalWasClosed(int error);

    // vorn::RequestQueueHost
    vorn::Lifetime::Token lifetime() override { return weak_from_this(); }
    bool writeRequest(QByteArrayView data) override { return sendData(data); }
    void requestWasAnswered(const ORSSerialRequestPtr &request,
                            const QByteArray &response) override;
    bool reportsTimeouts() override { return implemented().requestDidTimeout; }
    void requestTimedOut(const ORSSerialRequestPtr &request) override;
    void pendingRequestDidChange() override;
    void requestsQueueDidChange() override;

    // Main thread only; null once the port object is gone.
    ORSSerialPort *port;
    const vorn::SerialDeviceHandle device;
    const QString path;
    const QString name;

    mutable std::mutex delegateMutex;
    vorn::WeakDelegate<ORSSerialPortDelegate> delegate;
    ORSSerialPortDelegate::Implements delegateImplements;

    mutable std::mutex settingsMutex;
    vorn::LineSettings settings;
    bool rts = false;
    bool dtr = false;
    // Held while the line (the output lines) are set, so that the latest values are set last.
    std::mutex lineMutex;
    std::mutex modemLinesMutex;
    std::atomic<bool> cts = false;
    std::atomic<bool> dsr = false;
    std::atomic<bool> dcd = false;

    // Held while the port opens and while it becomes closed, so that nobody sees a half-opened
    // port. Recursive, since a delegate may call open() again when a failure is reported.
    std::recursive_mutex opening;
    mutable std::mutex terminalMutex;
    std::shared_ptr<vorn::SerialTerminal> terminal;
    std::atomic<int> fileDescriptor = 0;

    const std::shared_ptr<vorn::LivePorts> livePorts = vorn::LivePorts::instance();

    vorn::SerialQueue requestHandlingQueue;
    mutable std::mutex listenersMutex;
    // Changed and matched on requestHandlingQueue only.
    std::vector<vorn::PacketMatcher> listeners;
    vorn::RequestQueue requests{requestHandlingQueue, *this};
};
