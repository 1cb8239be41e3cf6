#include "platform/CombinedDeviceRegistry.h"

namespace vorn {

SerialDeviceRegistry::Devices CombinedDeviceRegistry::devices() const
{
    Devices devices;
    for (const auto &part : m_parts)
        devices += part->devices();
    return devices;
}

bool CombinedDeviceRegistry::watchPublished(Handler handler)
{
    bool watching = false;
    for (const auto &part : m_parts)
        watching = part->watchPublished(handler) || watching;
    return watching;
}

bool CombinedDeviceRegistry::watchTerminated(Handler handler)
{
    bool watching = false;
    for (const auto &part : m_parts)
        watching = part->watchTerminated(handler) || watching;
    return watching;
}

} // namespace vorn
