#include "platform/SleepBlock.h"

namespace vorn {

SleepBlock::SleepBlock(const QString &reason, const QDBusConnection &bus)
{
    requestInhibitorLock(bus, QStringLiteral("sleep:shutdown"), reason, QStringLiteral("block"),
                         m_pendingCall, [this](const InhibitorLock &lock) { m_lock = lock; });
}

} // namespace vorn
