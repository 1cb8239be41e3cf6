#pragma once

#include "serial/ORSSerialPort.h"
#include "update/DeviceLine.h"
#include "update/ReceiveBuffer.h"

#include <memory>

namespace vorn {

// The line of a sequence over a serial port. The port's delegate puts the received chunks into the
// buffer on the main thread.
class PortLine final : public DeviceLine
{
public:
    PortLine(ORSSerialPortPtr port, std::shared_ptr<ReceiveBuffer> buffer);

    void send(QByteArrayView bytes) override;
    void setRts(bool high) override;
    LineEvent waitForChunk(Clock::time_point deadline, QByteArray &chunk) override;
    void pause(std::chrono::milliseconds time) override;
    Clock::time_point now() const override { return Clock::now(); }

private:
    const ORSSerialPortPtr m_port;
    const std::shared_ptr<ReceiveBuffer> m_buffer;
    bool m_hasSent = false;
    Clock::time_point m_passed{}; // the last deadline that has passed
    std::size_t m_inTime = 0;     // chunks that had arrived by then and are still to be taken
};

} // namespace vorn
