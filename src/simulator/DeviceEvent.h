#pragma once

#include <functional>

namespace vorn {

// Something that a simulated device tells its observer.
struct DeviceEvent
{
    enum class Kind {
        Exchange,     // a sync byte; number: exchanges so far
        Frame,        // a data frame or the last frame; number: its number in the download, from 1
        Update,       // an update was completed; number: updates so far
        Plugged,      // number: 0
        Unplugged,    // number: 0
        ProtocolError // an offence of the other side; number: offences so far
    };
    Kind kind;
    int number;
};

using DeviceObserver = std::function<void(const DeviceEvent &)>;

} // namespace vorn
