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
using ORSSerialPacketDescriptorPtr = std::shared_ptr<const ORSSerialPacketDescriptor>;
using ORSSerialRequestPtr = std::shared_ptr<ORSSerialRequest>;

// A system call for a port failed.
struct ORSSerialPortError
{
    int code = 0;        // errno
    QString description; // the system's text for it
    QString path;        // the port's path
};

// Receives a port's events on the main thread. All methods but the first are optional: the port
// knows which of them a delegate's class overrides and behaves accordingly (without
// serialPortWasClosed(), for example, queued requests survive a close). Ports hold delegates
// weakly. No method may run a nested event loop (a dialog's exec(), say): later events would
// overtake the remaining bytes.
class ORSSerialPortDelegate : public vorn::DelegateBase
{
public:
    // The device has gone; the port closes itself.
    virtual void serialPortWasRemovedFromSystem(ORSSerialPort &serialPort) = 0;

    // Bytes from the line, in order, at most 1024 at a time.
    virtual void serialPortDidReceiveData(ORSSerialPort &, const QByteArray & /*data*/) {}
    // A packet that matches a descriptor on which the port listens.
    virtual void serialPortDidReceivePacketMatchingDescriptor(ORSSerialPort &,
                                                              const QByteArray & /*packetData*/,
                                                              const ORSSerialPacketDescriptorPtr &)
    {
    }
    // The response to a request.
    virtual void serialPortDidReceiveResponseToRequest(ORSSerialPort &,
                                                       const QByteArray & /*responseData*/,
                                                       const ORSSerialRequestPtr &)
    {
    }
    // No response arrived in time. The request is null if none was pending by then.
    virtual void serialPortRequestDidTimeout(ORSSerialPort &, const ORSSerialRequestPtr &) {}
    virtual void serialPortDidEncounterError(ORSSerialPort &, const ORSSerialPortError &) {}
    virtual void serialPortWasOpened(ORSSerialPort &) {}
    virtual void serialPortWasClosed(ORSSerialPort &) {}

    // Those of the optional methods whose presence changes what a port does.
    struct Implements
    {
        bool requestDidTimeout = false;
        bool didEncounterError = false;
        bool wasClosed = false;
    };

    // The address of an inherited method names the base class, that of an overriding one does not.
    template <std::derived_from<ORSSerialPortDelegate> Delegate>
    static constexpr Implements implementedBy()
    {
        using Base = ORSSerialPortDelegate;
        return {
            .requestDidTimeout = overrides(&Delegate::serialPortRequestDidTimeout,
                                           &Base::serialPortRequestDidTimeout),
            .didEncounterError = overrides(&Delegate::serialPortDidEncounterError,
                                           &Base::serialPortDidEncounterError),
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
