#pragma once

#include "platform/SerialDeviceRegistry.h"

#include <functional>
#include <memory>

class QSocketNotifier;

namespace vorn {

// The watching side of a device registry: a descriptor that wakes the main thread's event loop, and
// the observer that is told what changed. Main thread only.
class DeviceEvents
{
public:
    using Devices = SerialDeviceRegistry::Devices;

    DeviceEvents();
    ~DeviceEvents();
    DeviceEvents(const DeviceEvents &) = delete;
    DeviceEvents &operator=(const DeviceEvents &) = delete;

    // Calls onReady whenever the descriptor is readable, until the application object ends.
    // Further calls change nothing. False when there is no descriptor or no application.
    bool listen(int descriptor, std::function<void()> onReady);
    void stop();

    void setObserver(SerialDeviceRegistry::Observer &observer) { m_observer = &observer; }

    // Tells the observer the difference: first what is gone, so that a device that came back under
    // the same path is there in the end, then what is new.
    void tell(const Devices &before, const Devices &now) const;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
    SerialDeviceRegistry::Observer *m_observer = nullptr;
};

} // namespace vorn
