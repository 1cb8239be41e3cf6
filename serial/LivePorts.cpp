#include "serial/LivePorts.h"

#include "serial/ORSSerialPort.h"

#include <algorithm>

namespace vorn {

LivePorts &LivePorts::instance()
{
    static LivePorts ports;
    return ports;
}

void LivePorts::add(ORSSerialPort *port)
{
    const std::lock_guard lock(m_mutex);
    m_ports.push_back(port);
}

void LivePorts::remove(const ORSSerialPort *port)
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::find(m_ports.begin(), m_ports.end(), port);
    if (found != m_ports.end())
        m_ports.erase(found);
}

ORSSerialPort *LivePorts::withPath(const QString &path) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_ports.begin(), m_ports.end(), [&](const ORSSerialPort *port) {
        return port->path() == path;
    });
    return found == m_ports.end() ? nullptr : *found;
}

} // namespace vorn
