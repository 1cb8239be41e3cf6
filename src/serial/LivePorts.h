#pragma once

#include <QString>

#include <memory>
#include <mutex>
#include <vector>

class ORSSerialPort;

namespace vorn {

// The ports that are alive in this process, in the order in which they were made; owned by others.
// Ports are added, removed and looked up on the main thread.
class LivePorts
{
public:
    // First called on the main thread. At the process's end all ports are closed, since it waits
    // for the threads of those that are open.
    static std::shared_ptr<LivePorts> instance();

    void add(ORSSerialPort *port);
    void remove(const ORSSerialPort *port);
    ORSSerialPort *withPath(const QString &path) const;
    void closeAll() const;

private:
    mutable std::mutex m_mutex;
    std::vector<ORSSerialPort *> m_ports;
};

} // namespace vorn
