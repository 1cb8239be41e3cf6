#pragma once

#include "simulator/SimulatedDevice.h"
#include "platform/FileDescriptor.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>

namespace vorn::test {

using namespace std::chrono_literals;

inline QByteArray frame(const QByteArray &body)
{
    const QByteArray bytes = static_cast<char>(body.size() + 1) + body;
    return bytes + std::accumulate(bytes.begin(), bytes.end(), '\0', std::bit_xor<char>());
}

inline QByteArray header(qsizetype length, quint32 address = 0x08001800)
{
    return frame(QByteArray::fromHex(QString::asprintf("%08x%08llx", address, length).toLatin1()));
}

inline const QByteArray Sync = QByteArray::fromHex("f4");
inline const QByteArray Connect = QByteArray::fromHex("0301fefc");
inline const QByteArray Version = QByteArray::fromHex("0302fdfc");
inline const QByteArray Download = QByteArray::fromHex("0303fcfc");
inline const QByteArray Ack = QByteArray::fromHex("af");
inline const QByteArray Nak = QByteArray::fromHex("fc");

// The other end of a simulated device: writes frames and reads answers on the bare terminal.
class TestUpdater
{
public:
    explicit TestUpdater(const QString &path)
        : m_fd(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
    }

    void send(const QByteArray &bytes) const
    {
        const auto size = static_cast<std::size_t>(bytes.size());
        EXPECT_EQ(::write(m_fd.get(), bytes.constData(), size), bytes.size());
    }

    // What the next read gives; nothing when the time is over or the terminal hangs up.
    QByteArray receiveChunk(QDeadlineTimer end = QDeadlineTimer(5s)) const
    {
        std::array<char, 256> chunk{};
        pollfd fd{m_fd.get(), POLLIN, 0};
        if (::poll(&fd, 1, static_cast<int>(end.remainingTime())) <= 0)
            return {};
        return {chunk.data(), std::max<ssize_t>(::read(fd.fd, chunk.data(), chunk.size()), 0)};
    }

    // What arrives until `count` bytes are there.
    QByteArray receive(qsizetype count, std::chrono::milliseconds limit = 5s) const
    {
        const QDeadlineTimer end(limit);
        QByteArray got;
        for (QByteArray chunk = "?"; got.size() < count && !chunk.isEmpty(); got += chunk)
            chunk = receiveChunk(end);
        return got;
    }

    QByteArray ask(const QByteArray &bytes, qsizetype answerLength = 1) const
    {
        send(bytes);
        return receive(answerLength);
    }

    // Sync byte and commands up to the download command; whether each was acknowledged.
    bool handshake() const
    {
        return ask(Sync) == Ack && ask(Connect, 4).startsWith(Ack) && ask(Version) == Ack &&
               ask(Download) == Ack;
    }

    // A whole update of a device that does not erase; whether each frame was acknowledged.
    bool update(qsizetype length) const
    {
        bool good = handshake() && ask(header(length)) == Ack;
        for (; good && length >= 250; length -= 250)
            good = ask(frame(QByteArray(250, 'x'))) == Ack;
        return good && ask(frame(QByteArray(length, 'x'))) == Ack;
    }

private:
    FileDescriptor m_fd;
};

// A simulated device with its other end.
struct TestedDevice
{
    explicit TestedDevice(const DeviceOptions &options)
        : device(options), started(device.start()), updater(device.path())
    {
        EXPECT_TRUE(started);
    }

    SimulatedDevice device;
    const bool started;
    const TestUpdater updater;
};

} // namespace vorn::test
