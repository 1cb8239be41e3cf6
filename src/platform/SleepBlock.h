#pragma once

#include "platform/InhibitorLock.h"

#include <QDBusConnection>
#include <QObject>

namespace vorn {

// Keeps the computer from sleeping and shutting down while it exists, once logind has granted the
// lock; the constructor does not wait for that. Without a bus or logind, or where logind refuses,
// it does nothing but log a line. Main thread only.
class SleepBlock
{
public:
    // The reason is shown to a user who tries to suspend or shut down.
    explicit SleepBlock(const QString &reason,
                        const QDBusConnection &bus = QDBusConnection::systemBus());

private:
    InhibitorLock m_lock;
    QObject m_pendingCall; // owns the request; its answer finds no receiver once this is gone
};

} // namespace vorn
