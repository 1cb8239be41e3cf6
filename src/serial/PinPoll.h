#pragma once

#include "serial/ORSSerialPort_p.h"

namespace vorn {

// Polls the input lines of an open terminal until it closes or turns out to have none, and reports
// their changes on the main thread. Runs as a repeated background job and not on the thread that
// reads: when an adapter does not answer, the kernel holds the request for 5 s, during which
// received bytes must still be read.
void startPinPoll(std::shared_ptr<ORSSerialPortPrivate> port,
                  std::shared_ptr<SerialTerminal> terminal);

} // namespace vorn
