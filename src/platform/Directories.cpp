#include "platform/Directories.h"

#include <QStandardPaths>

namespace vorn {

QString cachesDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
}

} // namespace vorn
