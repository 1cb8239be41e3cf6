#pragma once

#include <QList>
#include <QString>

namespace vorn {

// Who may use a device node, as the file system says it.
struct DeviceNodeFacts
{
    bool exists = false;       // false also where this user may not look the path up
    bool isAccessible = false; // this process may read and write it (access(2))
    QString group;             // the group that owns it; its number when it has no name
    unsigned mode = 0;         // permission bits, 07777
};

// Reads the facts at the path, following links. Any thread.
DeviceNodeFacts deviceNodeFacts(const QString &path);

// A process that has a device node open.
struct NodeHolder
{
    QString program; // its name in /proc (comm: 15 bytes at most), safe to show on one line
    qint64 pid = 0;
};

// The other processes that have the node open, under whatever path. Empty where the node does not
// exist; without root rights only this user's processes can be seen. Any thread, but not the main
// one: it walks all of /proc.
QList<NodeHolder> holdersOf(const QString &path);

// Whether a process of this name (comm, as in NodeHolder) runs. Any thread.
bool isProgramRunning(const QString &program);

} // namespace vorn
