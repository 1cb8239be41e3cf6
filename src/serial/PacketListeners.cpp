#include "serial/PacketListeners.h"

#include <algorithm>

namespace vorn {

std::vector<PacketMatcher>::const_iterator PacketListeners::find(const Descriptor &descriptor) const
{
    return std::find_if(m_listeners.begin(), m_listeners.end(), [&](const PacketMatcher &listener) {
        return *listener.descriptor() == *descriptor;
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
    for (const PacketMatcher &listener : m_listeners)
        all.append(listener.descriptor());
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
        m_listeners.emplace_back(descriptor);
}

void PacketListeners::remove(const Descriptor &descriptor)
{
    const std::lock_guard lock(m_mutex);
    const auto found = find(descriptor);
    if (found != m_listeners.end())
        m_listeners.erase(found);
}

void PacketListeners::receive(char byte, const Report &report)
{
    // Without the lock: only the queue that runs this changes the list, and an evaluator of the
    // caller's may ask for it.
    for (PacketMatcher &listener : m_listeners)
        if (const auto packet = listener.append(byte))
            report(listener.descriptor(), *packet);
}

} // namespace vorn
