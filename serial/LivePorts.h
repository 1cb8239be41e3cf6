#pragma once

#include <QString>

#include <mutex>
#include <vector>

class ORSSerialPort;

namespace vorn {

// The ports that are alive in this process, in the order in which they were made; owned by others.
// Any thread.
class LivePorts
{
public:
    static LivePorts &instance();

    void add(ORSSerialPort *port);
    void remove(const ORSSerialPort *port);
    ORSSerialPort *withPath(const QString &path) const;

private:
    mutable std::mutex m_mutex;
    std::vector<ORSSerialPort *> m_ports;
};

} // namespace vorn
