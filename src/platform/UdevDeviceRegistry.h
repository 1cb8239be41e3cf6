#pragma once

#include "platform/DeviceEvents.h"
#include "platform/SerialDeviceRegistry.h"
#include "platform/UdevPorts.h"

#include <mutex>
#include <vector>

namespace vorn {

// udev's serial ports that are backed by hardware, each under a name that does not change when its
// node is renumbered (see nameUdevPorts). Hot-plug events are received after udev's rules have run,
// so that links and properties are complete.
class UdevDeviceRegistry final : public SerialDeviceRegistry
{
public:
    UdevDeviceRegistry();

    Devices devices() const override;
    bool watch(Observer &observer) override;

private:
    void receive();

    UdevPointer<udev> m_udev;
    UdevPointer<udev_monitor> m_monitor;
    mutable std::mutex m_mutex; // guards m_ports
    std::vector<UdevPort> m_ports;
    DeviceEvents m_events;
};

} // namespace vorn
