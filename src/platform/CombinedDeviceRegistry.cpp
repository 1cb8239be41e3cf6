#include "platform/CombinedDeviceRegistry.h"

namespace vorn {

SerialDeviceRegistry::Devices CombinedDeviceRegistry::devices() const
{
    Devices devices;
    for (const auto &part : m_parts)
        devices += part->devices();
    return devices;
}

bool CombinedDeviceRegistry::watch(Observer &observer)
{
    bool watching = false;
    for (const auto &part : m_parts)
        watching = part->watch(observer) || watching;
    return watching;
}

} // namespace vorn
