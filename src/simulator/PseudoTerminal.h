#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

namespace vorn {

// The terminal of a device that is plugged in: a pseudo-terminal in raw mode, with a link to it.
// The device's side is the master; the slave is what a program opens as a serial port. Here the
// slave is kept open too, so that a program that closes it does not hang up the master. Destruction
// removes the link (unless something else has replaced it) and hangs up.
class PseudoTerminal
{
public:
    PseudoTerminal() = default;
    PseudoTerminal(const PseudoTerminal &) = delete;
    PseudoTerminal &operator=(const PseudoTerminal &) = delete;
    ~PseudoTerminal();

    // Without a name no link is made. A dangling link of that name, as a simulator that was killed
    // leaves it, is replaced; anything else is not. False, with the reason in *problem, on failure.
    [[nodiscard]] bool open(const QString &directory, const QString &name, QString *problem);

    int master() const { return m_master.get(); } // non-blocking
    const QString &slavePath() const { return m_slavePath; }
    const QString &path() const { return m_link.isEmpty() ? m_slavePath : m_link; }

    // Readable when other programs have opened or closed the slave; -1 when the system cannot tell.
    int watch() const { return m_watch.get(); }
    // Handles that and returns the number of new openings. A real port discards unread bytes and
    // its exclusive claim when its last user closes it; here the slave stays open, so this does
    // both.
    int takeUses();
    bool isInUse() const { return m_users > 0; }
    // Whether the slave holds bytes that no user has read.
    bool holdsUnread() const;

private:
    FileDescriptor m_master;
    FileDescriptor m_slave;
    FileDescriptor m_watch; // inotify
    QString m_slavePath;
    QString m_link;
    int m_users = 0;
};

} // namespace vorn
