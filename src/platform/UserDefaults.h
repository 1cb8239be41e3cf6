#pragma once

#include <QString>

namespace vorn {

// Strings that outlive the process, kept per user and application (QSettings). Main thread only.
class UserDefaults
{
public:
    // A null string when nothing is stored under the key.
    static QString stringForKey(const QString &key);
    // A null string removes the key.
    static void setStringForKey(const QString &value, const QString &key);
    // Writes changes to disk now; false when that failed.
    static bool synchronize();
};

} // namespace vorn
