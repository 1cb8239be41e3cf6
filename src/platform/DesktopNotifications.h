#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

namespace vorn {

// The desktop's notification service (org.freedesktop.Notifications on the session bus). Nothing
// here waits for it; when none answers, the message is dropped with a line in the log. Main thread
// only.
class DesktopNotifications
{
public:
    explicit DesktopNotifications(const QDBusConnection &bus = QDBusConnection::sessionBus());

    // Whether the desktop has a notification centre. Always true: a Linux desktop may start one on
    // demand, so it cannot be known to be missing.
    static bool exists() { return true; }

    // Shows a message, without sound; drops it while too many wait for the service.
    void deliver(const QString &title, const QString &informativeText);

private:
    QDBusConnection m_bus;
    QObject m_pendingCalls; // owns the calls that are not answered yet
};

} // namespace vorn
