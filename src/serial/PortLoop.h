#pragma once

#include "serial/ORSSerialPort_p.h"

#include <memory>

namespace vorn {

// The background thread of an open port: reads what arrives, notices that the device is gone, and
// closes the terminal at the end.
class PortLoop
{
public:
    PortLoop(std::shared_ptr<ORSSerialPortPrivate> port, std::shared_ptr<SerialTerminal> terminal);

    // Returns when the port is closed.
    void run();

private:
    // Each returns 0, or the errno by which the device says that it is gone.
    int waitAndRead();
    int readWhatIsThere();
    bool isRefilled() const;
    void deviceIsGone(int error);

    std::shared_ptr<ORSSerialPortPrivate> m_port;
    std::shared_ptr<SerialTerminal> m_terminal;
};

} // namespace vorn
