#include "simulator/TerminalWatch.h"

#include <QFile>

#include <sys/inotify.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace vorn {

TerminalWatch::TerminalWatch(const QString &path) : m_fd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
    constexpr std::uint32_t mask = IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE;
    if (m_fd.isValid() &&
        ::inotify_add_watch(m_fd.get(), QFile::encodeName(path).constData(), mask) < 0)
        m_fd = UniqueFd();
}

TerminalWatch::Changes TerminalWatch::takeChanges()
{
    Changes changes;
    std::array<std::byte, 4096> buffer{};
    for (;;) {
        const ssize_t got = m_fd.isValid() ? ::read(m_fd.get(), buffer.data(), buffer.size()) : -1;
        if (got <= 0) {
            changes.unused = m_users == 0;
            return changes;
        }
        for (std::size_t at = 0; at < static_cast<std::size_t>(got);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += sizeof event + event.len;
            if ((event.mask & IN_OPEN) != 0) {
                ++changes.opens;
                changes.handover = changes.handover || m_users == 0;
                ++m_users;
            } else if ((event.mask & (IN_CLOSE_WRITE | IN_CLOSE_NOWRITE)) != 0) {
                m_users = std::max(m_users - 1, 0);
                changes.handover = changes.handover || m_users == 0;
            }
        }
    }
}

} // namespace vorn
