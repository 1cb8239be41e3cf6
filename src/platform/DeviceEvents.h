#pragma once

#include "platform/SerialDeviceRegistry.h"

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace vorn {

// The event side of a device registry: a descriptor that wakes the main thread's event loop, and
// the observer of changes. Main thread only.
class DeviceEvents
{
public:
    using Devices = SerialDeviceRegistry::Devices;

    // Calls onReady whenever the descriptor is readable, until the application object is destroyed.
    // Further calls have no effect. False if there is no valid descriptor or no application.
    bool listen(int descriptor, std::function<void()> onReady);

    void setObserver(SerialDeviceRegistry::Observer &observer) { m_observer = &observer; }

    // Reports the difference to the observer: removed devices first, so that a device that came
    // back under the same path is present in the end.
    void report(const Devices &before, const Devices &now) const;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
    SerialDeviceRegistry::Observer *m_observer = nullptr;
};

} // namespace vorn
