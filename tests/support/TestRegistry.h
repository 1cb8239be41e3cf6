#pragma once

#include "platform/SerialDeviceRegistry.h"

namespace vorn {

// A registry whose devices a test plugs in and out. Main thread only.
class TestRegistry : public SerialDeviceRegistry
{
public:
    Devices devices() const override { return m_devices; }
    bool watch(Observer &observer) override
    {
        m_observer = &observer;
        return true;
    }

    // Devices that are there already when the registry is first asked.
    explicit TestRegistry(Devices present) : m_devices(std::move(present)) {}

    // One batch of devices that appeared (were removed).
    void plug(const Devices &batch)
    {
        m_devices += batch;
        if (m_observer)
            m_observer->serialPortsWerePublished(batch);
    }
    void unplug(const Devices &batch)
    {
        m_devices.removeIf(
            [&](const SerialDeviceHandle &device) { return batch.contains(device); });
        if (m_observer)
            m_observer->serialPortsWereTerminated(batch);
    }

private:
    Devices m_devices;
    Observer *m_observer = nullptr;
};

} // namespace vorn
