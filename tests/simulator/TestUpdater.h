#pragma once

#include "platform/FileDescriptor.h"
#include "simulator/SimulatedDevice.h"
#include "update/Frames.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace vorn::test {

using namespace std::chrono_literals;

inline QByteArray header(qsizetype length)
{
    return DownloadHeader(0x08001800, static_cast<quint32>(length));
}

inline const QByteArray kSync = QByteArray::fromHex("f4");
inline const QByteArray kAck = QByteArray::fromHex("af");
inline const QByteArray kNak = QByteArray::fromHex("fc");

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

    // What the next read gives; nothing after the limit or when the terminal hangs up.
    QByteArray receiveChunk(std::chrono::milliseconds limit = 5s) const
    {
        std::array<char, 256> chunk{};
        pollfd fd{m_fd.get(), POLLIN, 0};
        if (::poll(&fd, 1, static_cast<int>(limit.count())) <= 0)
            return {};
        return {chunk.data(), std::max<ssize_t>(::read(fd.fd, chunk.data(), chunk.size()), 0)};
    }

    // Sends a frame; what arrives until so many bytes are there.
    QByteArray ask(const QByteArray &bytes, qsizetype answerLength = 1) const
    {
        send(bytes);
        QByteArray got;
        for (QByteArray chunk = "?"; got.size() < answerLength && !chunk.isEmpty(); got += chunk)
            chunk = receiveChunk();
        return got;
    }

    // The sync byte and the commands up to the download command; whether all were acknowledged.
    bool handshake() const
    {
        return ask(kSync) == kAck && ask(CmdConnect(), 4).startsWith(kAck) &&
               ask(CmdQueryVersion()) == kAck && ask(CmdDownload()) == kAck;
    }

    // A whole update of a device that does not erase; whether each frame was acknowledged.
    bool update(qsizetype length) const
    {
        bool good = handshake() && ask(header(length)) == kAck;
        for (; good && length >= 250; length -= 250)
            good = ask(DataFrame(QByteArray(250, 'x'))) == kAck;
        return good && ask(DataFrame(QByteArray(length, 'x'))) == kAck;
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
