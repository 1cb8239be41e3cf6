#pragma once

#include "serial/ORSSerialPort_p.h"

namespace vorn {

// The background thread of an open port: reads what arrives, notices when the device is gone, and
// finally closes the terminal. Returns when the port is closed.
void runPortLoop(ORSSerialPortPrivate &port, const std::shared_ptr<SerialTerminal> &terminal);

} // namespace vorn
