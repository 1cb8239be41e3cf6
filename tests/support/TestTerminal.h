#pragma once

#include "platform/FileDescriptor.h"
#include "platform/SerialDeviceRegistry.h"
#include "tests/support/Eventually.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QFile>
#include <QString>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

namespace vorn {

// A pseudo-terminal whose far side, the device, is this object; path() is the serial port.
class TestTerminal
{
public:
    TestTerminal() : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK))
    {
        std::array<char, 64> path{};
        const int fd = m_master.get();
        EXPECT_TRUE(::grantpt(fd) == 0 && ::unlockpt(fd) == 0 &&
                    ::ptsname_r(fd, path.data(), path.size()) == 0);
        m_path = QFile::decodeName(path.data());
        // No echo before a port has set the line.
        termios attributes = lineSettings();
        ::cfmakeraw(&attributes);
        EXPECT_EQ(::tcsetattr(fd, TCSANOW, &attributes), 0);
    }

    const QString &path() const { return m_path; }
    int master() const { return m_master.get(); }

    // A device record for path(), or for a link to it.
    SerialDeviceHandle device(const QString &link = {}) const
    {
        SerialDevice device;
        device.calloutDevice = link.isEmpty() ? m_path : link;
        device.dialinDevice = m_path;
        device.ttyDevice = "usbserial-test";
        return std::make_shared<SerialDevice>(device);
    }

    // The settings of the line, as the port left them.
    termios lineSettings() const
    {
        termios attributes{};
        EXPECT_EQ(::tcgetattr(m_master.get(), &attributes), 0);
        return attributes;
    }

    // The device sends: at once what the line takes, the rest as it is read.
    void send(QByteArrayView bytes) const
    {
        constexpr int kLimit = 30000;
        pollfd room{m_master.get(), POLLOUT, 0};
        while (!bytes.isEmpty() && ::poll(&room, 1, kLimit) == 1) {
            const auto size = static_cast<size_t>(bytes.size());
            const ssize_t count = ::write(m_master.get(), bytes.data(), size);
            ASSERT_TRUE(count > 0 || errno == EAGAIN);
            bytes = bytes.sliced(std::max<ssize_t>(count, 0));
        }
        EXPECT_TRUE(bytes.isEmpty());
    }

    // What has arrived at the device; does not wait.
    QByteArray take() const
    {
        QByteArray all;
        std::array<char, 4096> chunk{};
        ssize_t count = 0;
        while ((count = ::read(m_master.get(), chunk.data(), chunk.size())) > 0)
            all.append(chunk.data(), count);
        return all;
    }
    // Waits for so many bytes at the device, with the event loop running.
    QByteArray take(qsizetype count) const
    {
        QByteArray all;
        EXPECT_TRUE(eventually([&] {
            all += take();
            return all.size() >= count;
        })) << "only "
            << all.size() << " bytes arrived";
        return all;
    }

    // The device is pulled out.
    void unplug() { m_master.reset(); }

private:
    FileDescriptor m_master;
    QString m_path;
};

} // namespace vorn
