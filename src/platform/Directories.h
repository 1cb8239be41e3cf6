#pragma once

#include <QString>

namespace vorn {

// The current user's caches directory ($XDG_CACHE_HOME, else ~/.cache), without a trailing slash.
QString cachesDirectory();

} // namespace vorn
