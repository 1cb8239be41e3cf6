#pragma once

#include "serial/ORSSerialPort_p.h"

#include <memory>

namespace vorn {

// Polls the input lines of an open terminal, and tells of their changes on the main thread. Runs as
// a repeated background job and not on the thread that reads: with an adapter that does not answer,
// the kernel holds the request for 5 s, in which the bytes that arrive must still be read.
class PinPoll : public std::enable_shared_from_this<PinPoll>
{
public:
    PinPoll(std::shared_ptr<ORSSerialPortPrivate> port, std::shared_ptr<SerialTerminal> terminal);

    // Polls now and goes on until the terminal closes or shows that it has no such lines.
    void start();

private:
    void poll();
    bool readLines();
    void tellChanges(int lines);

    const std::shared_ptr<ORSSerialPortPrivate> m_port;
    const std::shared_ptr<SerialTerminal> m_terminal;
    int m_lines = -1; // as polled last (TIOCM_*)
    int m_unconfirmedError = 0;
};

} // namespace vorn
