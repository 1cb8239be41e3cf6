#include "platform/SerialDeviceRegistry.h"

#include "platform/UdevDeviceRegistry.h"

#include <mutex>

namespace vorn {

namespace {

struct Installed
{
    std::mutex mutex;
    std::unique_ptr<SerialDeviceRegistry> registry;
};

Installed &installed()
{
    static Installed instance;
    return instance;
}

} // namespace

SerialDeviceRegistry &SerialDeviceRegistry::system()
{
    Installed &current = installed();
    const std::lock_guard lock(current.mutex);
    if (!current.registry)
        current.registry = std::make_unique<UdevDeviceRegistry>();
    return *current.registry;
}

void SerialDeviceRegistry::setSystem(std::unique_ptr<SerialDeviceRegistry> registry)
{
    Installed &current = installed();
    const std::lock_guard lock(current.mutex);
    current.registry = std::move(registry);
}

} // namespace vorn
