#pragma once

#include "platform/SerialDeviceRegistry.h"
#include "platform/UdevTty.h"

#include <vector>

namespace vorn {

// A port that is present and its device record.
struct UdevPort
{
    UdevTty tty;
    SerialDeviceHandle device;
};

// Returns a record for each port in `present`, in the same order. A known port keeps its record,
// and so its name, whatever else was added or removed. A new port is named as follows:
//   - an adapter of the kernel's usb-serial family: "usbserial-", a CDC-ACM device: "usbmodem-";
//     then the adapter's serial number, or its USB path if it has no serial number or shares it
//     with another adapter that is present; then "-" and the port's number if the adapter has
//     several ports;
//   - any other port: the kernel's name.
// So a name does not depend on the number of the device node. If two adapters with the same serial
// number are found together, both are named after their USB path; if one is added later, only that
// one is.
std::vector<UdevPort> nameUdevPorts(const std::vector<UdevPort> &known,
                                    const std::vector<UdevTty> &present);

} // namespace vorn
