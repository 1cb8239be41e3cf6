#pragma once

#include <QList>
#include <QString>

namespace vorn {

// Who may use a device node.
struct DeviceNodeFacts
{
    bool exists = false;       // also false if this user may not search its directory
    bool isAccessible = false; // this process may read and write it (access(2))
    QString group;             // the group that owns it; its number when it has no name
    unsigned mode = 0;         // permission bits, 07777
};

// Reads the facts at the path, following links. Any thread.
DeviceNodeFacts deviceNodeFacts(const QString &path);

// A process that has a device node open.
struct NodeHolder
{
    QString program; // comm in /proc: at most 15 bytes; safe to display on one line
    qint64 pid = 0;
};

// The other processes that have the node open, by whatever path they opened it. Empty if the node
// does not exist. Without root privileges, only this user's processes are seen. Reads all of /proc,
// so call it on a background thread.
QList<NodeHolder> holdersOf(const QString &path);

// Whether a process of this name (as in NodeHolder) is running. Any thread.
bool isProgramRunning(const QString &program);

} // namespace vorn
