#pragma once

#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"

#include <QByteArrayView>
#include <QList>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace vorn {

// The descriptors that a port listens for, each with the buffer that it is matched against. All
// changes and matching happen on the port's request handling queue; asking may be done anywhere.
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
    // Gives one received byte to every descriptor's buffer and reports the packets that it
    // completes.
    void receive(QByteArrayView byte, const Report &report);

private:
    struct Listener
    {
        Descriptor descriptor;
        ORSSerialBuffer buffer;
    };
    std::vector<Listener>::const_iterator find(const Descriptor &descriptor) const;

    mutable std::mutex m_mutex;
    std::vector<Listener> m_listeners;
};

} // namespace vorn
