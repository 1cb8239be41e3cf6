#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

struct sp_port;

namespace vorn {

// The terminal, opened for blocking reads and writes.
FileDescriptor openPlainTerminal(const QString &path);

// A pseudo-terminal as libserialport opens it. That library takes only names that the kernel lists
// as serial devices, and ports with modem lines. So, where the system lets us, the terminal is put
// in the place of such a node, for this process alone, and pretends to have the lines. get() is
// null where it does not.
class LibserialportTerminal
{
public:
    explicit LibserialportTerminal(const QString &path);
    ~LibserialportTerminal();
    LibserialportTerminal(const LibserialportTerminal &) = delete;
    LibserialportTerminal &operator=(const LibserialportTerminal &) = delete;

    sp_port *get() const { return m_port; }

private:
    sp_port *m_port = nullptr;
};

} // namespace vorn
