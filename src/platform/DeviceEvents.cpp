#include "platform/DeviceEvents.h"

#include <QCoreApplication>

namespace vorn {

bool DeviceEvents::listen(int descriptor, std::function<void()> onReady)
{
    if (m_notifier)
        return true;
    QCoreApplication *const application = QCoreApplication::instance();
    if (descriptor < 0 || !application)
        return false;
    m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [onReady = std::move(onReady)] { onReady(); });
    // A notifier must not outlive the application's event dispatcher.
    QObject::connect(application, &QObject::destroyed, m_notifier.get(),
                     [this] { m_notifier.reset(); });
    return true;
}

void DeviceEvents::report(const Devices &before, const Devices &now) const
{
    const auto without = [](Devices devices, const Devices &others) {
        devices.removeIf([&](const SerialDeviceHandle &device) { return others.contains(device); });
        return devices;
    };
    const Devices gone = without(before, now);
    const Devices added = without(now, before);
    if (m_observer && !gone.isEmpty())
        m_observer->serialPortsWereTerminated(gone);
    if (m_observer && !added.isEmpty())
        m_observer->serialPortsWerePublished(added);
}

} // namespace vorn
