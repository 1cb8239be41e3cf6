#pragma once

#include "platform/DeviceEvents.h"
#include "platform/FileDescriptor.h"
#include "platform/SerialDeviceRegistry.h"

#include <sys/types.h>

#include <mutex>
#include <vector>

namespace vorn {

// Serial devices that are the entries of a directory: links to terminals, or terminal nodes. A
// device's name is its entry's file name, its path is the entry's. Adding, removing or replacing an
// entry is plugging in or out. Hidden entries and those that lead to no character device are
// ignored. When the directory itself is removed or moved, all of its devices are gone for good.
class DirectoryDeviceRegistry final : public SerialDeviceRegistry
{
public:
    explicit DirectoryDeviceRegistry(const QString &directory);
    ~DirectoryDeviceRegistry() override;

    Devices devices() const override;
    bool watch(Observer &observer) override;

private:
    struct Entry
    {
        QByteArray fileName;
        ino_t inode = 0;    // of the entry itself, which tells a link from its successor
        dev_t terminal = 0; // the terminal that the entry leads to
        SerialDeviceHandle device;
    };
    using Entries = std::vector<Entry>;

    static Devices devicesOf(const Entries &entries);
    Entries scan(const Entries &known) const;
    void receive();

    const QString m_directory;
    FileDescriptor m_inotify;
    mutable std::mutex m_mutex; // guards m_entries and m_gone
    Entries m_entries;
    bool m_gone = false;
    DeviceEvents m_events;
};

} // namespace vorn
