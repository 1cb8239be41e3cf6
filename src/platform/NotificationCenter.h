#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace vorn {

// Named notifications with user information. post() calls each observer of the name, in the order
// of subscription, before it returns. Main thread only.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    using Handler = std::function<void(const QVariantMap &userInfo)>;

    static NotificationCenter &defaultCenter();

    // Calls the handler for each notification of that name while the observer exists.
    void addObserver(QObject *observer, const QString &name, Handler handler);
    void post(const QString &name, const QVariantMap &userInfo) { emit posted(name, userInfo); }

signals:
    void posted(const QString &name, const QVariantMap &userInfo);
};

} // namespace vorn
