#pragma once

#include "platform/SerialDeviceRegistry.h"
#include "tests/support/Eventually.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <vector>

namespace vorn {

inline QStringList namesOf(const SerialDeviceRegistry::Devices &devices)
{
    QStringList names;
    for (const SerialDeviceHandle &device : devices)
        names += device->ttyDevice;
    return names;
}

// Keeps what a registry told, batch by batch: "+name" for a device that appeared, "-name" for one
// that was removed.
class RegistryWatcher : private SerialDeviceRegistry::Observer
{
public:
    explicit RegistryWatcher(SerialDeviceRegistry &registry) { EXPECT_TRUE(registry.watch(*this)); }

    // The batches that arrived once there are so many of them; all that came when there are not.
    std::vector<QStringList> take(std::size_t count)
    {
        EXPECT_TRUE(eventually([&] { return m_batches.size() >= count; }));
        return std::exchange(m_batches, {});
    }
    // What the devices of the last batch are.
    const SerialDeviceRegistry::Devices &last() const { return m_last; }

private:
    void serialPortsWerePublished(const SerialDeviceRegistry::Devices &batch) override
    {
        keep(u'+', batch);
    }
    void serialPortsWereTerminated(const SerialDeviceRegistry::Devices &batch) override
    {
        keep(u'-', batch);
    }
    void keep(QChar sign, const SerialDeviceRegistry::Devices &batch)
    {
        m_last = batch;
        QStringList names = namesOf(batch);
        for (QString &name : names)
            name.prepend(sign);
        m_batches.push_back(names);
    }

    std::vector<QStringList> m_batches;
    SerialDeviceRegistry::Devices m_last;
};

using Batches = std::vector<QStringList>;

} // namespace vorn
