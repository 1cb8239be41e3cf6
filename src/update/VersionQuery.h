#pragma once

#include "update/BootLoaderLink.h"

#include <atomic>
#include <memory>

namespace vorn {

// Asks the device, just reset by a pulse on RTS, which model it is. Runs on a background thread.
class VersionQuery
{
public:
    VersionQuery(BootLoaderLink link, std::shared_ptr<std::atomic<qint32>> targetVersion);

    // Returns when the device has answered, with its model code in `targetVersion`, or will not.
    void run();

private:
    BootLoaderLink m_link;
    const std::shared_ptr<std::atomic<qint32>> m_targetVersion;
};

} // namespace vorn
