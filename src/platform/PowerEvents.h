#pragma once

#include <QDBusConnection>
#include <QObject>

#include <functional>
#include <memory>

namespace vorn {

// Tells when the computer is about to sleep and when it woke (logind's PrepareForSleep on the
// system bus). Holds logind's delay lock, so that the sleep waits for the first callback; logind
// itself waits 5 s at most by default. Without a bus or logind the callbacks are never called.
// Main thread only.
class PowerEvents : public QObject
{
    Q_OBJECT

public:
    PowerEvents(std::function<void()> willSleep, std::function<void()> didWake,
                const QDBusConnection &bus = QDBusConnection::systemBus());

    // For the willSleep callback: the sleep waits also until the last copy of what is returned is
    // gone, for work that goes on in the background. Null when there is no lock.
    std::shared_ptr<const void> delaySleep() const { return m_lock; }

private slots:
    void prepareForSleep(bool begins);

private:
    void takeLock();

    std::function<void()> m_willSleep;
    std::function<void()> m_didWake;
    QDBusConnection m_bus;
    std::shared_ptr<const void> m_lock; // logind's descriptor; closing it releases the lock
    bool m_sleeping = false;
};

} // namespace vorn
