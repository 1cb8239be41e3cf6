#pragma once

#include "platform/SerialDeviceRegistry.h"

#include <vector>

namespace vorn {

// Presents several registries as one: lists their devices in the order of the registries and
// forwards the events of all of them.
class CombinedDeviceRegistry final : public SerialDeviceRegistry
{
public:
    using Registries = std::vector<std::unique_ptr<SerialDeviceRegistry>>;

    explicit CombinedDeviceRegistry(Registries registries) : m_registries(std::move(registries)) {}

    Devices devices() const override;
    // True if at least one of the registries can be watched.
    bool watch(Observer &observer) override;

private:
    Registries m_registries;
};

} // namespace vorn
