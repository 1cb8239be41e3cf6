#pragma once

#include <QString>

namespace vorn {

// The display name of a serial device, in the two parts that a device record holds.
struct SerialDeviceName
{
    QString baseName;
    QString suffix;

    QString full() const { return baseName + suffix; }
};

// Splits a name after "usbserial-" or "usbmodem-", else after its last '-', else before its
// trailing digits; without any of these, all of it is the base name.
SerialDeviceName splitSerialDeviceName(const QString &name);

// Makes a serial number usable in a name: keeps letters, digits and "#+-.:=@_" and replaces every
// other character (slashes, spaces, control characters, invalid UTF-8) with '_'. Empty if nothing
// was kept, since such a serial number identifies nothing.
QString cleanSerialNumber(const QString &serialNumber);

// Makes a file or process name safe to display on one line: replaces control and format characters
// and line separators with '_'.
QString printableName(const QString &name);

} // namespace vorn
