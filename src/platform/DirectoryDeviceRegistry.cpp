#include "platform/DirectoryDeviceRegistry.h"

#include "platform/Log.h"
#include "platform/SerialDeviceName.h"

#include <QDir>
#include <QFile>

#include <sys/inotify.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace vorn {

DirectoryDeviceRegistry::DirectoryDeviceRegistry(const QString &directory)
    : m_directory(QDir(directory).absolutePath()),
      m_inotify(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
{
    m_watchError = m_inotify.isValid() ? 0 : errno;
    const QByteArray path = QFile::encodeName(m_directory);
    if (m_watchError == 0 &&
        ::inotify_add_watch(m_inotify.get(), path.constData(),
                            IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF |
                                IN_MOVE_SELF | IN_ONLYDIR) < 0)
        m_watchError = errno;
    if (m_watchError != 0) {
        qCWarning(logPlatform, "cannot watch the device directory %s: %s", path.constData(),
                  std::strerror(m_watchError));
        m_inotify.reset();
    }
    // After the watch has been added, so that no entry is missed in between.
    m_entries = scan({});
}

DirectoryDeviceRegistry::Entries DirectoryDeviceRegistry::scan(const Entries &known) const
{
    Entries entries;
    std::error_code failure;
    std::filesystem::directory_iterator item(QFile::encodeName(m_directory).toStdString(), failure);
    for (; !failure && item != end(item); item.increment(failure)) {
        const char *const path = item->path().c_str();
        const QByteArray fileName(item->path().filename().c_str());
        struct stat own = {};
        struct stat status = {};
        if (fileName.startsWith('.'))
            continue;
        if (::lstat(path, &own) != 0 || ::stat(path, &status) != 0) {
            // Any other error does not mean that the device is gone.
            if (errno != ENOENT)
                std::copy_if(known.begin(), known.end(), std::back_inserter(entries),
                             [&](const Entry &entry) { return entry.fileName == fileName; });
            continue;
        }
        if (!S_ISCHR(status.st_mode))
            continue;
        const QString name = QFile::decodeName(fileName);
        if (QFile::encodeName(name) != fileName) {
            qCWarning(logPlatform) << "file name of a device is not valid UTF-8:" << fileName;
            continue;
        }
        const auto same = std::find_if(known.begin(), known.end(), [&](const Entry &entry) {
            return entry.fileName == fileName && entry.inode == own.st_ino &&
                   entry.terminal == status.st_rdev;
        });
        if (same != known.end()) {
            entries.push_back(*same);
            continue;
        }
        const QString node = m_directory + u'/' + name;
        const SerialDeviceName split = splitSerialDeviceName(printableName(name));
        entries.push_back(
            {fileName, own.st_ino, status.st_rdev,
             std::make_shared<SerialDevice>(SerialDevice{.calloutDevice = node,
                                                         .dialinDevice = node,
                                                         .ttyDevice = split.full(),
                                                         .ttyBaseName = split.baseName,
                                                         .ttySuffix = split.suffix})});
    }
    if (failure && failure != std::errc::no_such_file_or_directory) {
        qCWarning(logPlatform) << m_directory << failure.message().c_str();
        return known;
    }
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return a.fileName < b.fileName; });
    return entries;
}

SerialDeviceRegistry::Devices DirectoryDeviceRegistry::devicesOf(const Entries &entries)
{
    Devices devices;
    for (const Entry &entry : entries)
        devices.push_back(entry.device);
    return devices;
}

SerialDeviceRegistry::Devices DirectoryDeviceRegistry::devices() const
{
    const std::lock_guard lock(m_mutex);
    return m_gone ? Devices() : devicesOf(scan(m_entries));
}

bool DirectoryDeviceRegistry::watch(Observer &observer)
{
    m_events.setObserver(observer);
    return m_events.listen(m_inotify.get(), [this] { receive(); });
}

void DirectoryDeviceRegistry::receive()
{
    Entries known = m_entries;
    bool gone = m_gone;
    alignas(inotify_event) std::array<char, 16384> buffer{};
    // Bounded, so that many events at once do not block the event loop; the rest wakes it again.
    for (int left = 64; left > 0; --left) {
        const ssize_t count = ::read(m_inotify.get(), buffer.data(), buffer.size());
        if (count <= 0)
            break;
        for (ssize_t at = 0; at < count;) {
            inotify_event event = {};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            const char *const name = buffer.data() + at + sizeof event;
            at += static_cast<ssize_t>(sizeof event + event.len);
            gone = gone || (event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0;
            // An entry that was removed and added again is another device, even with the same
            // terminal.
            if ((event.mask & (IN_DELETE | IN_MOVED_FROM)) != 0)
                std::erase_if(known, [&](const Entry &entry) { return entry.fileName == name; });
        }
    }
    // Scanning again covers lost events, too.
    Entries entries = gone ? Entries() : scan(known);
    const Devices before = devicesOf(m_entries);
    {
        const std::lock_guard lock(m_mutex);
        m_entries = std::move(entries);
        m_gone = gone;
    }
    m_events.report(before, devicesOf(m_entries));
}

} // namespace vorn
