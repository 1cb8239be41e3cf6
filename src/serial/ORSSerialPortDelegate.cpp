#include "serial/ORSSerialPortDelegate.h"

void ORSSerialPortDelegate::serialPortDidReceiveData(ORSSerialPort &, const QByteArray &) {}

void ORSSerialPortDelegate::serialPortDidReceivePacketMatchingDescriptor(
    ORSSerialPort &, const QByteArray &, const std::shared_ptr<const ORSSerialPacketDescriptor> &)
{
}

void ORSSerialPortDelegate::serialPortDidReceiveResponseToRequest(
    ORSSerialPort &, const QByteArray &, const std::shared_ptr<ORSSerialRequest> &)
{
}

void ORSSerialPortDelegate::serialPortRequestDidTimeout(ORSSerialPort &,
                                                        const std::shared_ptr<ORSSerialRequest> &)
{
}

void ORSSerialPortDelegate::serialPortDidEncounterError(ORSSerialPort &, const ORSSerialPortError &)
{
}

void ORSSerialPortDelegate::serialPortWasOpened(ORSSerialPort &) {}

void ORSSerialPortDelegate::serialPortWasClosed(ORSSerialPort &) {}
