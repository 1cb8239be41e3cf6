#include "update/BootLoaderLink.h"

#include "update/Frames.h"
#include "update/UpdateTexts.h"

#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

namespace vorn {
namespace {

// Where the device's answer to CmdConnect carries its version, which is its model code.
constexpr std::size_t kVersionByte = 3;

} // namespace

BootLoaderLink::BootLoaderLink(ORSSerialPortPtr port, std::shared_ptr<ReceiveBuffer> buffer,
                               ReceiveBuffer::Sequence sequence,
                               WeakDelegate<UpdateObserver> observer, const UpdateTimings &timings)
    : m_port(std::move(port)), m_buffer(std::move(buffer)), m_sequence(sequence),
      m_observer(observer), m_timings(timings), m_answerLimit(timings.answer)
{
}

void BootLoaderLink::sendSyncByte()
{
    const char sync = static_cast<char>(SyncByte);
    transmit(QByteArrayView(&sync, 1));
}

bool BootLoaderLink::sendCmdOrData(QByteArrayView frame, qsizetype byteLenght)
{
    if (!awaitRelease())
        return false;
    transmit(frame.first(byteLenght));
    return true;
}

Verdict BootLoaderLink::waitForAnswer()
{
    m_lastVerdict = m_buffer->waitForVerdict(m_sequence, m_answerLimit);
    return m_lastVerdict;
}

bool BootLoaderLink::awaitRelease()
{
    if (waitForAnswer() == Verdict::Timeout)
        showText(texts::kUpdateFailed);
    return m_lastVerdict == Verdict::Ack;
}

void BootLoaderLink::transmit(QByteArrayView frame)
{
    m_buffer->frameGoesOut();
    m_port->sendData(frame);
}

bool BootLoaderLink::handshake(bool &connected)
{
    sendSyncByte();
    const QByteArray connect = CmdConnect();
    connected = sendCmdOrData(connect, connect.size());
    if (!connected || !awaitRelease())
        return false;
    // Before the next frame goes out, since what arrives then answers that one.
    m_buffer->completeChunk(m_sequence, kVersionByte + 1, m_timings.answerGap);
    transmit(CmdQueryVersion());
    return true;
}

std::optional<qint32> BootLoaderLink::reportedVersion() const
{
    if (m_buffer->byteAt(0) != AckByte)
        return std::nullopt;
    return m_buffer->byteAt(kVersionByte);
}

void BootLoaderLink::showText(const QString &text)
{
    tell([&](UpdateObserver &observer) { observer.showUpdateText(text); });
}

void BootLoaderLink::tell(const std::function<void(UpdateObserver &)> &call)
{
    MainQueue::instance().postAndWait([&] {
        UpdateObserver *observer = m_observer.get();
        if (observer && m_buffer->isCurrent(m_sequence))
            call(*observer);
    });
}

void BootLoaderLink::scheduleRtsLow()
{
    GlobalQueue::instance().postAfter(
        m_timings.resetPulse, [port = m_port, buffer = m_buffer, sequence = m_sequence] {
            // A later sequence drives the line by itself.
            if (buffer->isCurrent(sequence))
                port->setRTS(false);
        });
}

} // namespace vorn
