#pragma once

#include "platform/MainQueue.h"
#include "serial/ORSSerialPort.h"
#include "tests/support/TestTerminal.h"

#include <QByteArrayList>

#include <cstring>
#include <filesystem>
#include <functional>
#include <utility>

namespace vorn {

// Records a port's events as text. Consecutive chunks are one event, since the line decides where
// they are cut.
class RecordingDelegate final : public ORSSerialPortDelegate
{
public:
    void serialPortWasRemovedFromSystem(ORSSerialPort &) override { keep("removed"); }
    void serialPortDidReceiveData(ORSSerialPort &, const QByteArray &data) override
    {
        EXPECT_LE(data.size(), 1024);
        if (!m_events.isEmpty() && m_events.last().startsWith("data "))
            m_events.last() += data;
        else
            keep("data " + data);
    }
    void serialPortDidReceivePacketMatchingDescriptor(ORSSerialPort &, const QByteArray &packetData,
                                                      const ORSSerialPacketDescriptorPtr &) override
    {
        keep("packet " + packetData);
    }
    void serialPortDidEncounterError(ORSSerialPort &, const ORSSerialPortError &error) override
    {
        EXPECT_EQ(error.description, QString::fromLocal8Bit(std::strerror(error.code)));
        const int code = error.code == EIO && hangsUp ? ENXIO : error.code;
        keep(QByteArray("error ") + ::strerrorname_np(code));
    }
    void serialPortWasOpened(ORSSerialPort &) override { keep("opened"); }
    void serialPortWasClosed(ORSSerialPort &) override { keep("closed"); }

    // A pseudo-terminal that hangs up yields an end of file to a reader and EIO to other calls:
    // both are recorded as ENXIO.
    bool hangsUp = true;
    std::function<void(const QByteArray &event)> onEvent;

    // Waits for as many events as are expected and compares them.
    void expect(const QByteArrayList &expected)
    {
        eventually([&] { return m_events.size() >= expected.size(); });
        EXPECT_EQ(take().join(", ").toStdString(), expected.join(", ").toStdString());
    }
    QByteArrayList take() { return std::exchange(m_events, {}); }
    bool contains(const QByteArray &event) const { return m_events.contains(event); }

private:
    void keep(const QByteArray &event)
    {
        EXPECT_TRUE(MainQueue::instance().isCurrent());
        m_events += event;
        if (onEvent)
            onEvent(event);
    }

    QByteArrayList m_events;
};

// A port on a pseudo-terminal.
class SerialPortFixture : public testing::Test
{
protected:
    void openPort()
    {
        m_port->open();
        EXPECT_TRUE(m_port->isOpen());
        m_delegate.expect(m_opened);
    }
    void closePort()
    {
        EXPECT_TRUE(m_port->close());
        m_delegate.expect({"closed"});
        EXPECT_FALSE(m_port->isOpen());
    }

    // True while this process holds the port's side of the terminal open.
    bool holdsTerminal() const
    {
        std::error_code closedMeanwhile;
        for (const auto &descriptor : std::filesystem::directory_iterator("/proc/self/fd"))
            if (const auto target = std::filesystem::read_symlink(descriptor, closedMeanwhile);
                QString::fromStdString(target).remove(" (deleted)") == m_terminal.path())
                return true;
        return false;
    }

    // A pseudo-terminal has no modem lines, which is reported at each opening.
    QByteArrayList m_opened{"error ENOTTY", "opened"};
    TestTerminal m_terminal;
    ORSSerialPortPtr m_port = ORSSerialPort::serialPortWithDevice(m_terminal.device());
    RecordingDelegate m_delegate;

    void SetUp() override { m_port->setDelegate(&m_delegate); }
};

} // namespace vorn
