#include "platform/WakeEvent.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>

namespace vorn {

WakeEvent::WakeEvent() : m_fd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!m_fd.isValid())
        m_error = errno;
}

void WakeEvent::set() const
{
    // EAGAIN would mean that the counter is full, and then the event is set already.
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_fd.get(), &one, sizeof one);
}

void WakeEvent::clear() const
{
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = ::read(m_fd.get(), &count, sizeof count);
}

} // namespace vorn
