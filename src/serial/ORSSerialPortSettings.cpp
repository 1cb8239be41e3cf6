// The setters and getters of a port's line settings and output lines.
#include "serial/ORSSerialPort_p.h"

namespace {

template <typename Value>
Value read(const ORSSerialPortPrivate &d, Value vorn::LineSettings::*field)
{
    const std::lock_guard lock(d.settingsMutex);
    return d.settings.*field;
}

// True if the value has changed.
template <typename Value>
bool store(ORSSerialPortPrivate &d, Value vorn::LineSettings::*field, Value value)
{
    const std::lock_guard lock(d.settingsMutex);
    return std::exchange(d.settings.*field, value) != value;
}

// The functions below hold a reference, since the receiver of an event may release the port.

template <typename Value>
void storeAndApply(const std::shared_ptr<ORSSerialPortPrivate> &of,
                   Value vorn::LineSettings::*field, Value value)
{
    const auto d = of->shared_from_this();
    if (!store(*d, field, value))
        return;
    d->setPortOptions();
    d->emitOnMain(&ORSSerialPort::lineSettingsChanged);
}

// close() only requests the closing. The port then still counts as open, so open() does nothing: an
// open port ends up closed.
void storeFlowControl(const std::shared_ptr<ORSSerialPortPrivate> &of,
                      bool vorn::LineSettings::*field, bool uses)
{
    const auto d = of->shared_from_this();
    {
        const std::lock_guard lock(d->opening);
        if (read(*d, field) == uses)
            return;
        const bool wasOpen = d->fileDescriptor != 0;
        d->close();
        store(*d, field, uses);
        d->setPortOptions();
        if (wasOpen)
            d->open();
    }
    d->emitOnMain(&ORSSerialPort::lineSettingsChanged);
}

void storeOutputLine(const std::shared_ptr<ORSSerialPortPrivate> &of,
                     bool ORSSerialPortPrivate::*line, bool on, void (ORSSerialPort::*changed)())
{
    const auto d = of->shared_from_this();
    {
        const std::lock_guard lock(d->settingsMutex);
        if (std::exchange(d.get()->*line, on) == on)
            return;
    }
    d->updateModemLines();
    d->emitOnMain(changed);
}

} // namespace

using vorn::LineSettings;

bool ORSSerialPort::allowsNonStandardBaudRates() const
{
    return read(*d, &LineSettings::allowsNonStandardBaudRates);
}

void ORSSerialPort::setAllowsNonStandardBaudRates(bool allows)
{
    store(*d, &LineSettings::allowsNonStandardBaudRates, allows);
}

quint32 ORSSerialPort::baudRate() const
{
    return read(*d, &LineSettings::baudRate);
}

void ORSSerialPort::setBaudRate(quint32 baudRate)
{
    const auto self = d;
    store(*self, &LineSettings::baudRate, baudRate);
    self->setPortOptions();
    self->emitOnMain(&ORSSerialPort::lineSettingsChanged);
}

uint ORSSerialPort::numberOfStopBits() const
{
    return read(*d, &LineSettings::stopBits);
}

void ORSSerialPort::setNumberOfStopBits(uint numberOfStopBits)
{
    storeAndApply(d, &LineSettings::stopBits, numberOfStopBits);
}

uint ORSSerialPort::numberOfDataBits() const
{
    return read(*d, &LineSettings::dataBits);
}

void ORSSerialPort::setNumberOfDataBits(uint numberOfDataBits)
{
    storeAndApply(d, &LineSettings::dataBits, numberOfDataBits);
}

uint ORSSerialPort::parity() const
{
    return read(*d, &LineSettings::parity);
}

void ORSSerialPort::setParity(uint parity)
{
    storeAndApply(d, &LineSettings::parity, parity > 2 ? 0 : parity);
}

bool ORSSerialPort::shouldEchoReceivedData() const
{
    return read(*d, &LineSettings::echo);
}

void ORSSerialPort::setShouldEchoReceivedData(bool echo)
{
    storeAndApply(d, &LineSettings::echo, echo);
}

bool ORSSerialPort::usesRTSCTSFlowControl() const
{
    return read(*d, &LineSettings::rtsCts);
}

void ORSSerialPort::setUsesRTSCTSFlowControl(bool uses)
{
    storeFlowControl(d, &LineSettings::rtsCts, uses);
}

bool ORSSerialPort::usesDTRDSRFlowControl() const
{
    return read(*d, &LineSettings::dtrDsr);
}

void ORSSerialPort::setUsesDTRDSRFlowControl(bool uses)
{
    storeFlowControl(d, &LineSettings::dtrDsr, uses);
}

bool ORSSerialPort::usesDCDOutputFlowControl() const
{
    return read(*d, &LineSettings::dcd);
}

void ORSSerialPort::setUsesDCDOutputFlowControl(bool uses)
{
    storeFlowControl(d, &LineSettings::dcd, uses);
}

bool ORSSerialPort::RTS() const
{
    const std::lock_guard lock(d->settingsMutex);
    return d->rts;
}

void ORSSerialPort::setRTS(bool on)
{
    storeOutputLine(d, &ORSSerialPortPrivate::rts, on, &ORSSerialPort::RTSChanged);
}

bool ORSSerialPort::DTR() const
{
    const std::lock_guard lock(d->settingsMutex);
    return d->dtr;
}

void ORSSerialPort::setDTR(bool on)
{
    storeOutputLine(d, &ORSSerialPortPrivate::dtr, on, &ORSSerialPort::DTRChanged);
}
