#include "serial/LivePorts.h"

#include "platform/MainQueue.h"
#include "serial/ORSSerialPort.h"

#include <algorithm>

namespace vorn {

namespace {

// Each port shares the list too: one that is destroyed still later takes itself off it.
struct ClosedAtExit
{
    ClosedAtExit()
    {
        // Made first, so that it ends, and with it the background threads, after this.
        MainQueue::instance();
    }
    ~ClosedAtExit() { ports->closeAll(); }
    ClosedAtExit(const ClosedAtExit &) = delete;
    ClosedAtExit &operator=(const ClosedAtExit &) = delete;

    const std::shared_ptr<LivePorts> ports = std::make_shared<LivePorts>();
};

} // namespace

std::shared_ptr<LivePorts> LivePorts::instance()
{
    static const ClosedAtExit list;
    return list.ports;
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

void LivePorts::closeAll() const
{
    const std::lock_guard lock(m_mutex);
    for (ORSSerialPort *port : m_ports)
        port->close();
}

} // namespace vorn
