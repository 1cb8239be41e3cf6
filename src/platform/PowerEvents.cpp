#include "platform/PowerEvents.h"

#include "platform/Log.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

namespace vorn {

namespace {

constexpr QLatin1String kService("org.freedesktop.login1");
constexpr QLatin1String kPath("/org/freedesktop/login1");
constexpr QLatin1String kInterface("org.freedesktop.login1.Manager");

} // namespace

PowerEvents::PowerEvents(std::function<void()> willSleep, std::function<void()> didWake,
                         const QDBusConnection &bus)
    : m_willSleep(std::move(willSleep)), m_didWake(std::move(didWake)), m_bus(bus)
{
    if (!m_bus.connect(kService, kPath, kInterface, QStringLiteral("PrepareForSleep"), this,
                       SLOT(prepareForSleep(bool)))) {
        qCInfo(logPlatform) << "Sleep and wake cannot be followed:" << m_bus.lastError();
        return;
    }
    takeLock();
}

void PowerEvents::takeLock()
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Inhibit"));
    call.setArguments({QStringLiteral("sleep"), QCoreApplication::applicationName(),
                       tr("Serial ports are closed before sleep"), QStringLiteral("delay")});
    auto *const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
        if (reply.isError())
            qCInfo(logPlatform) << "Sleep cannot be delayed:" << reply.error();
        else if (!m_sleeping)
            m_lock = std::make_shared<QDBusUnixFileDescriptor>(reply.value());
        watcher->deleteLater();
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
