#pragma once

#include "platform/DeviceEvents.h"
#include "platform/FileDescriptor.h"
#include "platform/SerialDeviceRegistry.h"

#include <sys/types.h>

#include <mutex>
#include <vector>

namespace vorn {

// A directory whose entries, links to terminals or terminal nodes, are serial devices. The name and
// path of a device are those of its entry. Adding and removing an entry is plugging a device in and
// out; replacing one is both. Hidden entries and those that lead to no character device are
// ignored. When the directory itself is removed or moved, its devices are gone for good.
class DirectoryDeviceRegistry final : public SerialDeviceRegistry
{
public:
    explicit DirectoryDeviceRegistry(const QString &directory);

    // 0, or the errno for which added and removed entries go unnoticed.
    int watchError() const { return m_watchError; }

    Devices devices() const override;
    bool watch(Observer &observer) override;

private:
    struct Entry
    {
        QByteArray fileName;
        ino_t inode = 0;    // of the entry itself: a new link has another one
        dev_t terminal = 0; // the terminal that the entry leads to
        SerialDeviceHandle device;
    };
    using Entries = std::vector<Entry>;

    static Devices devicesOf(const Entries &entries);
    Entries scan(const Entries &known) const;
    void receive();

    const QString m_directory;
    FileDescriptor m_inotify;
    int m_watchError = 0;
    mutable std::mutex m_mutex; // guards m_entries and m_gone
    Entries m_entries;
    bool m_gone = false;
    DeviceEvents m_events;
};

} // namespace vorn
