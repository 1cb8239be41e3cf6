#pragma once

#include "platform/InhibitorLock.h"

#include <QDBusConnection>
#include <QObject>

#include <functional>

namespace vorn {

// Calls back when the computer is about to sleep and when it has woken up (logind's PrepareForSleep
// on the system bus). Holds a delay lock, so that the computer sleeps only after willSleep has
// returned; logind waits 5 s at most by default. Without a bus or logind neither is ever called.
// Main thread only.
class PowerEvents : public QObject
{
    Q_OBJECT

public:
    PowerEvents(std::function<void()> willSleep, std::function<void()> didWake,
                const QDBusConnection &bus = QDBusConnection::systemBus());

    // For work that willSleep starts in the background: sleep is delayed until the last copy is
    // gone. Null when there is no lock.
    InhibitorLock delaySleep() const { return m_lock; }

private slots:
    void prepareForSleep(bool begins);

private:
    void takeLock();

    std::function<void()> m_willSleep;
    std::function<void()> m_didWake;
    QDBusConnection m_bus;
    InhibitorLock m_lock;
    bool m_sleeping = false;
};

} // namespace vorn
