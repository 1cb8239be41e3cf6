#include "platform/UserDefaults.h"

#include <QSettings>

namespace vorn {

QString UserDefaults::stringForKey(const QString &key)
{
    return QSettings().value(key).toString();
}

void UserDefaults::setStringForKey(const QString &value, const QString &key)
{
    if (value.isNull())
        QSettings().remove(key);
    else
        QSettings().setValue(key, value);
}

bool UserDefaults::synchronize()
{
    QSettings settings;
    settings.sync();
    return settings.status() == QSettings::NoError;
}

} // namespace vorn
