// Device lookup in the system's device registry.
#include "serial/ORSSerialPort.h"

using vorn::SerialDevice;
using vorn::SerialDeviceHandle;

SerialDeviceHandle ORSSerialPort::deviceFromBSDPath(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    for (const SerialDeviceHandle &device : vorn::SerialDeviceRegistry::system().devices())
        if (path == bsdCalloutPathFromDevice(device) || path == bsdDialinPathFromDevice(device))
            return device;
    return nullptr;
}

QString ORSSerialPort::stringPropertyOf(const SerialDeviceHandle &device, const QString &key)
{
    struct Property
    {
        QStringView key;
        QString SerialDevice::*value;
    };
    static constexpr Property kProperties[] = {
        {u"IOCalloutDevice", &SerialDevice::calloutDevice},
        {u"IODialinDevice", &SerialDevice::dialinDevice},
        {u"IOTTYDevice", &SerialDevice::ttyDevice},
        {u"IOTTYBaseName", &SerialDevice::ttyBaseName},
        {u"IOTTYSuffix", &SerialDevice::ttySuffix},
        {u"IOSerialBSDClientType", &SerialDevice::clientType},
    };
    for (const Property &property : kProperties)
        if (device && key == property.key)
            return (*device).*property.value;
    return {};
}
