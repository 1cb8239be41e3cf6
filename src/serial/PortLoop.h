#pragma once

#include "serial/ORSSerialPort_p.h"

#include <chrono>
#include <memory>

namespace vorn {

// The background thread of an open port: reads what arrives, polls the modem lines, notices that
// the device is gone, and closes the terminal at the end.
class PortLoop
{
public:
    PortLoop(std::shared_ptr<ORSSerialPortPrivate> port, std::shared_ptr<SerialTerminal> terminal);

    // Returns when the port is closed.
    void run();

private:
    using Clock = std::chrono::steady_clock;

    // Each returns 0, or the errno by which the device says that it is gone.
    int waitAndHandle();
    int readWhatIsThere();
    int pollPins();

    bool isRefilled() const;
    void updatePins(int lines);
    int millisecondsToPinPoll() const;
    void deviceIsGone(int error);

    std::shared_ptr<ORSSerialPortPrivate> m_port;
    std::shared_ptr<SerialTerminal> m_terminal;
    Clock::time_point m_nextPinPoll = Clock::now();
    bool m_pollsPins = true;
};

} // namespace vorn
