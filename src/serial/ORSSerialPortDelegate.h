#pragma once

#include "platform/WeakDelegate.h"

#include <QByteArray>
#include <QString>

#include <concepts>
#include <memory>
#include <type_traits>

class ORSSerialPacketDescriptor;
class ORSSerialPort;
class ORSSerialRequest;

// A failure that the system reported for a port (POSIX error domain).
struct ORSSerialPortError
{
    int code = 0;        // errno
    QString description; // the system's text for it
    QString path;        // the port's path
};

// Receives a port's events, always on the main thread. All methods but the first are optional: the
// port sees which of them a delegate's class overrides and behaves accordingly (without
// serialPortWasClosed(), for example, queued requests survive a close). Ports hold delegates
// weakly. No method may run an event loop of its own (a dialog's exec(), say): later events would
// overtake the rest of the bytes.
class ORSSerialPortDelegate : public vorn::DelegateBase
{
public:
    // The device behind the port is gone; the port closes itself.
    virtual void serialPortWasRemovedFromSystem(ORSSerialPort &serialPort) = 0;

    // Bytes from the line, in order, at most 1024 at a time.
    virtual void serialPortDidReceiveData(ORSSerialPort &serialPort, const QByteArray &data);
    // A packet that a listened-for descriptor matched.
    virtual void serialPortDidReceivePacketMatchingDescriptor(
        ORSSerialPort &serialPort, const QByteArray &packetData,
        const std::shared_ptr<const ORSSerialPacketDescriptor> &descriptor);
    // The response that a sent request waited for.
    virtual void
    serialPortDidReceiveResponseToRequest(ORSSerialPort &serialPort, const QByteArray &responseData,
                                          const std::shared_ptr<ORSSerialRequest> &request);
    // A request got no response in time. No request when none was pending by then.
    virtual void serialPortRequestDidTimeout(ORSSerialPort &serialPort,
                                             const std::shared_ptr<ORSSerialRequest> &request);
    virtual void serialPortDidEncounterError(ORSSerialPort &serialPort,
                                             const ORSSerialPortError &error);
    virtual void serialPortWasOpened(ORSSerialPort &serialPort);
    virtual void serialPortWasClosed(ORSSerialPort &serialPort);

    // Which optional methods a delegate implements.
    struct Implements
    {
        bool didReceiveData = false;
        bool didReceivePacket = false;
        bool didReceiveResponse = false;
        bool requestDidTimeout = false;
        bool didEncounterError = false;
        bool wasOpened = false;
        bool wasClosed = false;
    };

    // An inherited method's address still names the base class, an overriding one's does not.
    template <std::derived_from<ORSSerialPortDelegate> Delegate>
    static constexpr Implements implementedBy()
    {
        using Base = ORSSerialPortDelegate;
        return {
            .didReceiveData =
                overrides(&Delegate::serialPortDidReceiveData, &Base::serialPortDidReceiveData),
            .didReceivePacket = overrides(&Delegate::serialPortDidReceivePacketMatchingDescriptor,
                                          &Base::serialPortDidReceivePacketMatchingDescriptor),
            .didReceiveResponse = overrides(&Delegate::serialPortDidReceiveResponseToRequest,
                                            &Base::serialPortDidReceiveResponseToRequest),
            .requestDidTimeout = overrides(&Delegate::serialPortRequestDidTimeout,
                                           &Base::serialPortRequestDidTimeout),
            .didEncounterError = overrides(&Delegate::serialPortDidEncounterError,
                                           &Base::serialPortDidEncounterError),
            .wasOpened = overrides(&Delegate::serialPortWasOpened, &Base::serialPortWasOpened),
            .wasClosed = overrides(&Delegate::serialPortWasClosed, &Base::serialPortWasClosed),
        };
    }

protected:
    ~ORSSerialPortDelegate() override = default;

private:
    template <typename Mine, typename Inherited>
    static constexpr bool overrides(Mine, Inherited)
    {
        return !std::is_same_v<Mine, Inherited>;
    }
};
