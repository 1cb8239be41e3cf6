#include "update/PortLine.h"

#include "platform/MainQueue.h"

#include <thread>
#include <utility>

namespace vorn {
namespace {

// The port reads what has arrived within this time, even on a busy machine.
constexpr std::chrono::milliseconds kReadTime{50};

} // namespace

PortLine::PortLine(ORSSerialPortPtr port, std::shared_ptr<ReceiveBuffer> buffer)
    : m_port(std::move(port)), m_buffer(std::move(buffer))
{
}

void PortLine::send(QByteArrayView bytes)
{
    if (m_buffer->isAbandoned())
        return;
    m_buffer->drop();
    // Behind the answers to an earlier sequence that have been read and wait for the main thread.
    if (!std::exchange(m_hasSent, true))
        MainQueue::instance().post([buffer = m_buffer] { buffer->startReceiving(); });
    m_port->sendData(bytes);
}

// An abandoned sequence still ends a pulse that it has started.
void PortLine::setRts(bool high)
{
    if (!high || !m_buffer->isAbandoned())
        m_port->setRTS(high);
}

LineEvent PortLine::waitForChunk(Clock::time_point deadline, QByteArray &chunk)
{
    if (Clock::now() < deadline) {
        const LineEvent event = m_buffer->waitForChunk(deadline, chunk);
        if (event != LineEvent::Silence)
            return event;
    }
    // The main thread delivers what the port has read, and may be busy: what it has delivered once
    // everything queued so far is handled arrived in time. Nothing later counts, or a device that
    // never falls silent would prolong the wait without end.
    if (std::exchange(m_passed, deadline) != deadline) {
        // The program was stopped: an answer that came meanwhile is still to be read by the port.
        if (Clock::now() - deadline > kReadTime)
            pause(kReadTime);
        MainQueue::instance().postAndWait([] {});
        m_inTime = m_buffer->held();
    } else if (m_inTime > 0) {
        --m_inTime;
    }
    if (m_inTime == 0 && m_buffer->held() > 0)
        return m_buffer->isAbandoned() ? LineEvent::Abandoned : LineEvent::Silence;
    return m_buffer->waitForChunk(deadline, chunk);
}

void PortLine::pause(std::chrono::milliseconds time)
{
    std::this_thread::sleep_for(time);
}

} // namespace vorn
