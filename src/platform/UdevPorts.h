#pragma once

#include "platform/SerialDeviceRegistry.h"
#include "platform/UdevTty.h"

#include <vector>

namespace vorn {

// A port that is present, and the record that was made of it.
struct UdevPort
{
    UdevTty tty;
    SerialDeviceHandle device;
};

// Records for the ports that are present now, in their order. A port that is known already keeps
// its record, and with it its name, whatever came or went around it. A new one is named
//   - "usbserial-" (the kernel's usb-serial family) or "usbmodem-" (CDC-ACM) and the adapter's
//     serial number; the adapter's USB path instead when it has no serial number, or when another
//     adapter that is present has the same one; then "-" and the port's number when the adapter has
//     several;
//   - else as the kernel names it.
// So the name does not depend on the number of the node. Of two adapters with one serial number
// that are found together both are named by their USB path; of two that come one after the other
// only the later.
std::vector<UdevPort> nameUdevPorts(const std::vector<UdevPort> &known,
                                    const std::vector<UdevTty> &present);

} // namespace vorn
