#pragma once

#include "platform/MainQueue.h"
#include "serial/ORSSerialPort.h"
#include "tests/support/Eventually.h"

#include <QByteArrayList>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <utility>

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

    // A terminal that hangs up yields an end of file to a reader and EIO to other calls: both are
    // recorded as ENXIO.
    bool hangsUp = false;
    std::function<void(const QByteArray &event)> onEvent;

    // Waits for as many events as are expected and compares them.
    void expect(const QByteArrayList &expected)
    {
        vorn::eventually([&] { return m_events.size() >= expected.size(); });
        EXPECT_EQ(take().join(", ").toStdString(), expected.join(", ").toStdString());
    }
    QByteArrayList take() { return std::exchange(m_events, {}); }
    bool contains(const QByteArray &event) const { return m_events.contains(event); }

private:
    void keep(const QByteArray &event)
    {
        EXPECT_TRUE(vorn::MainQueue::instance().isCurrent());
        m_events += event;
        if (onEvent)
            onEvent(event);
    }

    QByteArrayList m_events;
};
