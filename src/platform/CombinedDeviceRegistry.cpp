#include "platform/CombinedDeviceRegistry.h"

namespace vorn {

SerialDeviceRegistry::Devices CombinedDeviceRegistry::devices() const
{
    Devices devices;
    for (const auto &registry : m_registries)
        devices += registry->devices();
    return devices;
}

bool CombinedDeviceRegistry::watch(Observer &observer)
{
    bool watching = false;
    for (const auto &registry : m_registries)
        watching = registry->watch(observer) || watching;
    return watching;
}

} // namespace vorn
