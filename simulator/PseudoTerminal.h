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

    // What the closing of a real port's last user does: the exclusive claim ends, raw mode is back
    // and bytes that nobody has read are gone.
    void settle() const;
    // Discards bytes that were written for a program and not read by it.
    void discardUnread() const;

private:
    PseudoTerminal() = default;

    UniqueFd m_master;
    UniqueFd m_slave;
    QString m_slavePath;
};

} // namespace vorn
