#pragma once

#include <QLatin1String>
#include <QString>

#include <functional>
#include <memory>

class QDBusConnection;
class QObject;

namespace vorn {

// logind's manager object on the system bus.
inline constexpr QLatin1String kLogindService("org.freedesktop.login1");
inline constexpr QLatin1String kLogindPath("/org/freedesktop/login1");
inline constexpr QLatin1String kLogindInterface("org.freedesktop.login1.Manager");

// A lock granted by logind; released with its last copy, on any thread.
using InhibitorLock = std::shared_ptr<const void>;

// Asks logind for a lock and returns at once. `what` is a list such as "sleep:shutdown", `why` is
// shown to the user, `mode` is "delay" or "block". Calls `granted` on the main thread; if the
// receiver is gone by then, the lock is released. A refusal, or a missing bus or logind, is only
// logged. Main thread only.
void requestInhibitorLock(const QDBusConnection &bus, const QString &what, const QString &why,
                          const QString &mode, QObject &receiver,
                          std::function<void(const InhibitorLock &)> granted);

} // namespace vorn
