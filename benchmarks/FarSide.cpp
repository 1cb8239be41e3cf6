#include "benchmarks/FarSide.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>

#include <array>
#include <cstdlib>

namespace vorn {

FarSide::FarSide() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))
{
    std::array<char, 64> path{};
    if (::grantpt(m_master.get()) != 0 || ::unlockpt(m_master.get()) != 0 ||
        ::ptsname_r(m_master.get(), path.data(), path.size()) != 0)
        std::abort();
    m_path = QString::fromLatin1(path.data());
    m_slave = FileDescriptor(::open(path.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    termios raw{};
    ::tcgetattr(m_slave.get(), &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(m_slave.get(), TCSANOW, &raw);
}

FarSide::~FarSide()
{
    stop();
}

bool FarSide::waitFor(short events) const
{
    std::array<pollfd, 2> waiting{{{m_master.get(), events, 0}, {m_stop.descriptor(), POLLIN, 0}}};
    ::poll(waiting.data(), waiting.size(), -1);
    return waiting[1].revents == 0;
}

void FarSide::echo(qsizetype frame)
{
    stop();
    m_thread = std::thread([this, frame] {
        std::array<char, 4096> bytes{};
        qsizetype count = 0;
        while (waitFor(POLLIN)) {
            const ssize_t got = ::read(m_master.get(), bytes.data(), bytes.size());
            for (count += got > 0 ? got : 0; count >= frame; count -= frame)
                if (::write(m_master.get(), "\xAF", 1) != 1)
                    return;
        }
    });
}

void FarSide::stream(qint64 bytes)
{
    stop();
    m_thread = std::thread([this, bytes] {
        const std::array<char, 4096> block{};
        qint64 left = bytes;
        while (left > 0 && waitFor(POLLOUT)) {
            const auto size = static_cast<size_t>(std::min<qint64>(left, block.size()));
            const ssize_t written = ::write(m_master.get(), block.data(), size);
            left -= written > 0 ? written : 0;
        }
    });
}

void FarSide::stop()
{
    if (!m_thread.joinable())
        return;
    m_stop.set();
    m_thread.join();
    m_stop.clear();
}

void FarSide::hangUp()
{
    stop();
    m_slave.reset();
    m_master.reset();
}

} // namespace vorn
