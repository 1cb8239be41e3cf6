#include "platform/UdevDeviceRegistry.h"

#include "platform/Log.h"

#include <libudev.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

namespace vorn {

namespace {

// True if udev has yet to run its rules for an adapter that was just plugged in. The monitor will
// report it then.
bool isAwaitingRules(udev_device *device, const UdevTty &tty)
{
    return tty.family != UdevTty::Family::Other && !udev_device_get_is_initialized(device) &&
           !udev_device_get_property_value(device, "ID_BUS") &&
           ::access("/run/udev/control", F_OK) == 0;
}

// The kernel's names of the ttys that are not virtual. udev makes more than 100 system calls for
// each tty that it enumerates, and most ttys are consoles. Nothing when they cannot be read.
std::optional<std::vector<std::string>> namesOfRealTtys()
{
    std::vector<std::string> names;
    std::error_code failure;
    for (std::filesystem::directory_iterator item("/sys/class/tty", failure), end;
         !failure && item != end; item.increment(failure)) {
        std::error_code noLink;
        const std::string target = std::filesystem::read_symlink(item->path(), noLink);
        if (target.find("/devices/virtual/") == std::string::npos)
            names.push_back(item->path().filename());
    }
    if (failure && failure != std::errc::no_such_file_or_directory) {
        qCWarning(logPlatform, "/sys/class/tty: %s", failure.message().c_str());
        return std::nullopt;
    }
    return names;
}

// The serial ports that are present, in udev's order; nothing when they cannot be told. Uses its
// own udev context, so that it can run on any thread.
std::optional<std::vector<UdevTty>> scanTtys()
{
    std::vector<UdevTty> ttys;
    const auto names = namesOfRealTtys();
    if (!names)
        return std::nullopt;
    if (names->empty())
        return ttys;
    const UdevPointer<udev> context(udev_new());
    const UdevPointer<udev_enumerate> list(context ? udev_enumerate_new(context.get()) : nullptr);
    const auto addName = [&](const std::string &name) {
        return udev_enumerate_add_match_sysname(list.get(), name.c_str()) >= 0;
    };
    if (!list || udev_enumerate_add_match_subsystem(list.get(), "tty") < 0 ||
        !std::all_of(names->begin(), names->end(), addName) ||
        udev_enumerate_scan_devices(list.get()) < 0) {
        qCWarning(logPlatform, "udev cannot enumerate the serial devices");
        return std::nullopt;
    }
    udev_list_entry *entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get()))
    {
        const UdevPointer<udev_device> device(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        if (!device)
            continue; // gone since the listing
        const auto tty = readUdevTty(device.get());
        if (tty && !isAwaitingRules(device.get(), *tty))
            ttys.push_back(*tty);
    }
    return ttys;
}

SerialDeviceRegistry::Devices devicesOf(const std::vector<UdevPort> &ports)
{
    SerialDeviceRegistry::Devices devices;
    for (const UdevPort &port : ports)
        devices.push_back(port.device);
    return devices;
}

} // namespace

UdevDeviceRegistry::UdevDeviceRegistry() : m_udev(udev_new())
{
    if (m_udev)
        m_monitor.reset(udev_monitor_new_from_netlink(m_udev.get(), "udev"));
    if (m_monitor &&
        (udev_monitor_filter_add_match_subsystem_devtype(m_monitor.get(), "tty", nullptr) < 0 ||
         udev_monitor_enable_receiving(m_monitor.get()) < 0))
        m_monitor.reset();
    if (!m_monitor)
        qCWarning(logPlatform,
                  "cannot monitor udev: added and removed serial devices will not be noticed");
    // After the monitor has been enabled, so that no device is missed in between.
    m_ports = nameUdevPorts({}, scanTtys().value_or(std::vector<UdevTty>()));
}

SerialDeviceRegistry::Devices UdevDeviceRegistry::devices() const
{
    const auto present = scanTtys();
    const std::lock_guard lock(m_mutex);
    return devicesOf(present ? nameUdevPorts(m_ports, *present) : m_ports);
}

bool UdevDeviceRegistry::watch(Observer &observer)
{
    m_events.setObserver(observer);
    return m_monitor &&
           m_events.listen(udev_monitor_get_fd(m_monitor.get()), [this] { receive(); });
}

void UdevDeviceRegistry::receive()
{
    std::vector<UdevPort> known = m_ports;
    std::vector<UdevTty> added;
    bool lostEvents = false;
    // Bounded, so that many events at once do not block the event loop; the rest wakes it again.
    for (int left = 1000; left > 0; --left) {
        errno = 0;
        const UdevPointer<udev_device> device(udev_monitor_receive_device(m_monitor.get()));
        if (!device) {
            lostEvents = lostEvents || errno == ENOBUFS;
            if (errno == EAGAIN || errno == 0)
                break;
            continue;
        }
        const QByteArrayView action = udev_device_get_action(device.get());
        const QString kernelName = QString::fromUtf8(udev_device_get_sysname(device.get()));
        const auto tty = action == "add" || action == "change" ? readUdevTty(device.get())
                                                               : std::optional<UdevTty>();
        const auto isSamePort = [&](const UdevPort &port) { return port.tty.isSamePort(*tty); };
        const bool isNew = tty && std::none_of(known.begin(), known.end(), isSamePort);
        // A kernel name that is used again was free: its removal was lost.
        if (action == "remove" || isNew) {
            std::erase_if(known,
                          [&](const UdevPort &port) { return port.tty.kernelName == kernelName; });
            std::erase_if(added,
                          [&](const UdevTty &other) { return other.kernelName == kernelName; });
        }
        if (isNew)
            added.push_back(*tty);
    }

    auto present = lostEvents ? scanTtys() : std::nullopt;
    if (!present) {
        present.emplace();
        for (const UdevPort &port : known)
            present->push_back(port.tty);
        present->insert(present->end(), added.begin(), added.end());
    }
    const Devices before = devicesOf(m_ports);
    std::vector<UdevPort> ports = nameUdevPorts(known, *present);
    {
        const std::lock_guard lock(m_mutex);
        m_ports = std::move(ports);
    }
    m_events.report(before, devicesOf(m_ports));
}

} // namespace vorn
