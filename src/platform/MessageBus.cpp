#include "platform/MessageBus.h"

#include "platform/FileDescriptor.h"
#include "platform/Log.h"

#include <QByteArray>
#include <QByteArrayList>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;

// Where libdbus looks for a bus: the environment variable, else the default address.
struct Bus
{
    const char *variable;
    QByteArray defaultAddress;
};

// The socket in an address such as "unix:path=/run/user/1000/bus,guid=..."; in a list of addresses,
// that of the first. Empty for other transports, which are not checked. An abstract name begins
// with '\0'.
QByteArray socketName(const QByteArray &address)
{
    const QByteArray first = address.split(';').constFirst();
    if (!first.startsWith("unix:"))
        return {};
    for (const QByteArray &pair : first.mid(5).split(',')) {
        if (pair.startsWith("path="))
            return QByteArray::fromPercentEncoding(pair.mid(5));
        if (pair.startsWith("abstract="))
            return '\0' + QByteArray::fromPercentEncoding(pair.mid(9));
    }
    return {};
}

// Connects to a bus and asks it for its authentication mechanisms; returns no descriptor if there
// is no bus. Sets `isFull` if the bus has stopped accepting connections.
FileDescriptor ask(const QByteArray &name, bool &isFull)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof address.sun_path)
        return {};
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) +
                                             static_cast<std::size_t>(name.size()));
    if (::connect(fd.get(), reinterpret_cast<const sockaddr *>(&address), size) != 0) {
        isFull = errno == EAGAIN;
        return {};
    }
    constexpr std::array kQuestion{'\0', 'A', 'U', 'T', 'H', '\r', '\n'};
    if (::send(fd.get(), kQuestion.data(), kQuestion.size(), MSG_NOSIGNAL) < 0)
        return {};
    return fd;
}

} // namespace

void disableSilentBuses(std::chrono::milliseconds limit)
{
    const std::array buses{
        Bus{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + qgetenv("XDG_RUNTIME_DIR") + "/bus"},
        Bus{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/var/run/dbus/system_bus_socket"}};
    const auto deadline = Clock::now() + limit;
    std::array<FileDescriptor, buses.size()> connections;
    std::array<bool, buses.size()> isSilent{};
    for (std::size_t i = 0; i < buses.size(); ++i) {
        const QByteArray address = qgetenv(buses[i].variable);
        connections[i] =
            ask(socketName(address.isEmpty() ? buses[i].defaultAddress : address), isSilent[i]);
    }
    for (std::size_t i = 0; i < buses.size(); ++i) {
        pollfd answer{connections[i].get(), POLLIN, 0};
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (connections[i].isValid() &&
            ::poll(&answer, 1, static_cast<int>(std::max<std::int64_t>(left, 0))) == 0)
            isSilent[i] = true;
        if (!isSilent[i])
            continue;
        qCWarning(logPlatform, "%s: the message bus does not answer; continuing without it",
                  buses[i].variable);
        qputenv(buses[i].variable, "disabled:");
    }
}

} // namespace vorn
