#pragma once

#include "simulator/UniqueFd.h"

#include <QString>

namespace vorn {

// Sees other programs open and close a terminal. Where the system cannot tell (no inotify), it
// sees nothing and the descriptor is -1.
class TerminalWatch
{
public:
    TerminalWatch() = default;
    explicit TerminalWatch(const QString &path);

    int descriptor() const { return m_fd.get(); } // readable when there is something to take

    struct Changes
    {
        int opens = 0;
        bool handover = false; // the last user left or the first one came
        bool unused = false;   // now
    };
    Changes takeChanges();

private:
    UniqueFd m_fd;
    int m_users = 0;
};

} // namespace vorn
