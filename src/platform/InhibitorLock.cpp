#include "platform/InhibitorLock.h"

#include "platform/Log.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>

namespace vorn {

void requestInhibitorLock(const QDBusConnection &bus, const QString &what, const QString &why,
                          const QString &mode, QObject &receiver,
                          std::function<void(const InhibitorLock &)> granted)
{
    QDBusMessage call = QDBusMessage::createMethodCall(kLogindService, kLogindPath,
                                                       kLogindInterface, QStringLiteral("Inhibit"));
    call.setArguments({what, QCoreApplication::applicationName(), why, mode});
    auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), &receiver);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, what, mode, granted = std::move(granted)] {
                         const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
                         if (reply.isError())
                             qCInfo(logPlatform)
                                 << "No inhibitor lock:" << mode << what << reply.error();
                         else
                             granted(std::make_shared<QDBusUnixFileDescriptor>(reply.value()));
                         watcher->deleteLater();
                     });
}

} // namespace vorn
