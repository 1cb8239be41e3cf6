#include "platform/SleepBlock.h"

namespace vorn {

SleepBlock::SleepBlock(const QString &reason, const QDBusConnection &bus)
{
    requestInhibitorLock(bus, QStringLiteral("sleep:shutdown"), reason, QStringLiteral("block"),
                         m_pendingCall, [this](const InhibitorLock &lock) { m_lock = lock; });
    // By default the lid's switch heeds no other lock. Asked for on its own, since logind may
    // refuse it and grant the first.
    requestInhibitorLock(bus, QStringLiteral("handle-lid-switch"), reason, QStringLiteral("block"),
                         m_pendingCall, [this](const InhibitorLock &lock) { m_lidLock = lock; });
}

} // namespace vorn
