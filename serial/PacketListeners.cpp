#include "serial/PacketListeners.h"

#include <algorithm>

namespace vorn {

std::vector<PacketListeners::Listener>::const_iterator
PacketListeners::find(const Descriptor &descriptor) const
{
    return std::find_if(m_listeners.begin(), m_listeners.end(), [&](const Listener &listener) {
        return *listener.descriptor == *descriptor;
    });
}

bool PacketListeners::contains(const Descriptor &descriptor) const
{
    const std::lock_guard lock(m_mutex);
    return find(descriptor) != m_listeners.end();
}

QList<PacketListeners::Descriptor> PacketListeners::descriptors() const
{
    const std::lock_guard lock(m_mutex);
    QList<Descriptor> all;
    for (const Listener &listener : m_listeners)
        all.append(listener.descriptor);
    return all;
}

bool PacketListeners::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_listeners.empty();
}

void PacketListeners::add(const Descriptor &descriptor)
{
    const std::lock_guard lock(m_mutex);
    if (find(descriptor) == m_listeners.end())
        m_listeners.push_back({descriptor, ORSSerialBuffer(descriptor->maximumPacketLength())});
}

void PacketListeners::remove(const Descriptor &descriptor)
{
    const std::lock_guard lock(m_mutex);
    const auto found = find(descriptor);
    if (found != m_listeners.end())
        m_listeners.erase(found);
}

void PacketListeners::receive(QByteArrayView byte, const Report &report)
{
    // Without the lock: only the queue that runs this changes the list, and an evaluator of the
    // caller's may ask for it.
    for (Listener &listener : m_listeners) {
        listener.buffer.appendData(byte);
        const auto packet =
            listener.descriptor->packetMatchingAtEndOfBuffer(listener.buffer.data());
        if (packet && !packet->isEmpty()) {
            report(listener.descriptor, *packet);
            listener.buffer.clearBuffer();
        }
    }
}

} // namespace vorn
