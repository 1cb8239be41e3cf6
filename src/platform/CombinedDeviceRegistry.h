#pragma once

#include "platform/SerialDeviceRegistry.h"

#include <vector>

namespace vorn {

// Several registries as one: their devices one registry after the other, the events of all.
class CombinedDeviceRegistry final : public SerialDeviceRegistry
{
public:
    using Parts = std::vector<std::unique_ptr<SerialDeviceRegistry>>;

    explicit CombinedDeviceRegistry(Parts parts) : m_parts(std::move(parts)) {}

    Devices devices() const override;
    // True when at least one of the registries can be watched.
    bool watch(Observer &observer) override;

private:
    Parts m_parts;
};

} // namespace vorn
