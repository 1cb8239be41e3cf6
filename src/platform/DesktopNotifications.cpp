#include "platform/DesktopNotifications.h"

#include "platform/Log.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>

namespace vorn {
namespace {

// How many messages may wait for the service: enough for a hub full of adapters. More at once come
// from a loose contact, and would be shown for minutes after it.
constexpr qsizetype kMostPending = 64;

} // namespace

DesktopNotifications::DesktopNotifications(const QDBusConnection &bus) : m_bus(bus) {}

void DesktopNotifications::deliver(const QString &title, const QString &informativeText)
{
    if (m_pendingCalls.children().size() >= kMostPending) {
        qCInfo(logPlatform) << "No desktop notification, too many are waiting:" << informativeText;
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QString application = QCoreApplication::applicationName();
    const quint32 replacesNone = 0;
    const qint32 serversChoice = -1; // of the time that the message stays
    call.setArguments({application, replacesNone, /*icon*/ application, title,
                       informativeText.toHtmlEscaped(), // servers read the body as markup
                       /*actions*/ QStringList(),
                       QVariantMap{{QStringLiteral("suppress-sound"), true},
                                   {QStringLiteral("desktop-entry"), application}},
                       serversChoice});
    auto *const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), &m_pendingCalls);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher, [watcher] {
        if (watcher->isError())
            qCInfo(logPlatform) << "No desktop notification was shown:" << watcher->error();
        watcher->deleteLater();
    });
}

} // namespace vorn
