#pragma once

#include "platform/FileDescriptor.h"

namespace vorn {

// An event that poll(2) can wait for beside other descriptors (eventfd, non-blocking). Any thread
// may call any method.
class WakeEvent
{
public:
    WakeEvent();

    // 0, or the errno for which there is no descriptor.
    int error() const { return m_error; }
    // The descriptor is readable from set() until clear().
    int descriptor() const { return m_fd.get(); }
    void set() const;
    void clear() const;

private:
    FileDescriptor m_fd;
    int m_error = 0;
};

} // namespace vorn
