#pragma once

#include <QString>

namespace vorn {

// The display name of a serial device as the two halves that a device record keeps.
struct SerialDeviceName
{
    QString baseName;
    QString suffix;

    QString full() const { return baseName + suffix; }
};

// Splits a name behind "usbserial-" or "usbmodem-", else behind its last '-', else before the
// digits at its end; a name with none of them is all base name.
SerialDeviceName splitSerialDeviceName(const QString &name);

// A serial number as part of a name: letters, digits and "#+-.:=@_" stay, every other character
// (slashes, spaces, control characters, invalid UTF-8) becomes '_'. Empty when nothing stays, since
// such a serial number distinguishes nothing.
QString cleanSerialNumber(const QString &serialNumber);

// A file name as a display name: every character that cannot be shown on one line (control and
// format characters, line separators) becomes '_'.
QString printableName(const QString &fileName);

} // namespace vorn
