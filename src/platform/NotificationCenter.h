#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace vorn {

// Named notifications with a dictionary of user information, delivered to every observer of the
// name, in the order of subscription, before post() returns. Main thread only.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const QVariantMap &userInfo)>;

    static NotificationCenter &defaultCenter();

    // Calls the handler for each notification of that name, from any sender, as long as the
    // observer lives.
    void addObserver(QObject *observer, const QString &name, Handler handler);
    void post(const QString &name, const QVariantMap &userInfo);

signals:
    void posted(const QString &name, const QVariantMap &userInfo);
};

} // namespace vorn
