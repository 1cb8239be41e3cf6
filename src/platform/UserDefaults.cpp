#include "platform/UserDefaults.h"

#include <QSettings>

namespace vorn {

QString UserDefaults::stringForKey(const QString &key)
{
    const QVariant value = QSettings().value(key);
    return value.isValid() ? value.toString() : QString();
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
