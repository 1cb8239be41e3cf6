#include "platform/PowerEvents.h"

#include "platform/Log.h"

#include <QDBusError>

namespace vorn {

PowerEvents::PowerEvents(std::function<void()> willSleep, std::function<void()> didWake,
                         const QDBusConnection &bus)
    : m_willSleep(std::move(willSleep)), m_didWake(std::move(didWake)), m_bus(bus)
{
    if (!m_bus.connect(kLogindService, kLogindPath, kLogindInterface,
                       QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)))) {
        qCInfo(logPlatform) << "Sleep and wake events are not available:" << m_bus.lastError();
        return;
    }
    takeLock();
}

void PowerEvents::takeLock()
{
    requestInhibitorLock(m_bus, QStringLiteral("sleep"), tr("Serial ports are closed before sleep"),
                         QStringLiteral("delay"), *this, [this](const InhibitorLock &lock) {
                             if (!m_sleeping)
                                 m_lock = lock;
                         });
}

void PowerEvents::prepareForSleep(bool begins)
{
    if (begins == m_sleeping)
        return;
    m_sleeping = begins;
    if (begins) {
        m_willSleep();
        m_lock.reset();
    } else {
        m_didWake();
        takeLock();
    }
}

} // namespace vorn
