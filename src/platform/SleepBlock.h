#pragma once

#include "platform/InhibitorLock.h"

#include <QDBusConnection>
#include <QObject>

namespace vorn {

// Keeps the computer from sleeping (also when its lid is closed) and shutting down while it exists.
// The constructor requests the lock from logind without waiting; if there is no bus or logind, or
// if logind refuses, that is only logged. Main thread only.
class SleepBlock
{
public:
    // The reason is shown to a user who tries to suspend or shut down.
    explicit SleepBlock(const QString &reason,
                        const QDBusConnection &bus = QDBusConnection::systemBus());

private:
    InhibitorLock m_lock;
    InhibitorLock m_lidLock;
    QObject m_pendingCall; // owns the request: a lock granted after destruction is released
};

} // namespace vorn
