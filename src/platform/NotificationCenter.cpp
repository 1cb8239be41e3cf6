#include "platform/NotificationCenter.h"

namespace vorn {

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

void NotificationCenter::addObserver(QObject *observer, const QString &name, Handler handler)
{
    connect(
        this, &NotificationCenter::posted, observer,
        [name, handler = std::move(handler)](const QString &posted, const QVariantMap &userInfo) {
            if (posted == name)
                handler(userInfo);
        });
}

} // namespace vorn
