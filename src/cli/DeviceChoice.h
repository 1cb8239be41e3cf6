#pragma once

#include "cli/CliOptions.h"
#include "cli/DeviceRun.h"
#include "serial/ORSSerialPortManager.h"

namespace vorn {

// The devices that the window would offer, by their names.
ORSSerialPortList offeredDevices();
// The devices that the command names, or all that are offered, or the only one. Sets `problem` when
// there are none or it is not clear which.
ORSSerialPortList chosenDevices(const CliOptions &options, Explanation &problem);

DeviceTask taskOf(const CliOptions &options);
// What is wrong with the image, as far as it can be told without a device. Cause::None: nothing.
Explanation problemOfImage(const CliOptions &options);
// Why the firmware folder, whose scan ended with this errno or 0, has no file.
Explanation problemOfFolder(const CliOptions &options, int error);

} // namespace vorn
