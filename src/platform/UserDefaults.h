#pragma once

#include <QString>

namespace vorn {

// Persistent strings, stored per user and application (QSettings). Main thread only.
class UserDefaults
{
public:
    // A null string if nothing is stored under the key.
    static QString stringForKey(const QString &key);
    // A null string removes the key.
    static void setStringForKey(const QString &value, const QString &key);
    // Writes changes to disk now; false if that failed.
    static bool synchronize();
};

} // namespace vorn
