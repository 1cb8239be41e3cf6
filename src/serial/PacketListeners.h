#pragma once

#include "serial/PacketMatcher.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vorn {

// The descriptors that a port listens for, each with the newest bytes that it is matched against.
// All changes and matching happen on the port's request handling queue; asking may be done
// anywhere.
class PacketListeners
{
public:
    using Descriptor = std::shared_ptr<const ORSSerialPacketDescriptor>;
    using Report = std::function<void(const Descriptor &, const QByteArray &packet)>;

    bool contains(const Descriptor &descriptor) const;
    QList<Descriptor> descriptors() const;
    bool isEmpty() const;

    void add(const Descriptor &descriptor);
    void remove(const Descriptor &descriptor);
    // Gives one received byte to every descriptor and reports the packets that it completes.
    void receive(char byte, const Report &report);

private:
    std::vector<PacketMatcher>::const_iterator find(const Descriptor &descriptor) const;

    mutable std::mutex m_mutex;
    std::vector<PacketMatcher> m_listeners;
};

} // namespace vorn
