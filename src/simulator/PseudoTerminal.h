#pragma once

#include "simulator/UniqueFd.h"

#include <QString>

#include <optional>

namespace vorn {

// A pseudo-terminal in raw mode. The device's side is the master; the slave is what a program
// opens as a serial port. The slave is held open here too, so that no closing by the program hangs
// up the master, and neither side ever sees an echo.
class PseudoTerminal
{
public:
    // Nothing, and the reason in *problem, when the system has no terminal to give.
    static std::optional<PseudoTerminal> open(QString *problem);

    int master() const { return m_master.get(); } // non-blocking
    const QString &slavePath() const { return m_slavePath; }

    // The closing of a real port's last user ends its exclusive claim and discards what it has not
    // read. Here the slave stays open, so both must be done.
    void endExclusiveUse() const;
    void discardUnread() const;
    // Whether the slave holds bytes that its users have not read.
    bool holdsUnread() const;

private:
    PseudoTerminal() = default;

    UniqueFd m_master;
    UniqueFd m_slave;
    QString m_slavePath;
};

} // namespace vorn
