#include "update/BootLoaderLink.h"

#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"
#include "update/Frames.h"
#include "update/UpdateTexts.h"

namespace vorn {
namespace {

using namespace std::chrono_literals;

// Where the device's answer to CmdConnect carries its version, which is its model code.
constexpr std::size_t kVersionByte = 3;

// Everything that the port has read by now is in the buffer afterwards: the port's chunks and this
// job share a queue. A time-out says nothing about the device while the main thread, which delivers
// the answers, is busy.
void waitForDelivery()
{
    MainQueue::instance().postAndWait([] {});
}

} // namespace

BootLoaderLink::BootLoaderLink(ORSSerialPortPtr port, std::shared_ptr<ReceiveBuffer> buffer,
                               ReceiveBuffer::Sequence sequence,
                               WeakDelegate<UpdateObserver> observer, const UpdateTimings &timings)
    : m_port(std::move(port)), m_buffer(std::move(buffer)), m_sequence(sequence),
      m_observer(std::move(observer)), m_timings(timings), m_answerLimit(timings.answer)
{
}

void BootLoaderLink::sendSyncByte()
{
    const char sync = static_cast<char>(SyncByte);
    transmit(QByteArrayView(&sync, 1));
}

bool BootLoaderLink::sendCmdOrData(QByteArrayView frame, qsizetype byteLenght)
{
    if (waitForAnswer() != Verdict::Ack)
        return false;
    transmit(frame.first(byteLenght));
    return true;
}

Verdict BootLoaderLink::waitForAnswer()
{
    m_buffer->clearReceiveByte();
    m_lastVerdict = m_buffer->waitForVerdict(m_sequence, m_answerLimit);
    if (m_lastVerdict == Verdict::Timeout) {
        waitForDelivery();
        m_lastVerdict = m_buffer->waitForVerdict(m_sequence, 0ms);
    }
    return m_lastVerdict;
}

void BootLoaderLink::transmit(QByteArrayView frame)
{
    // What goes wrong here closes the port or leaves the device silent, and the next wait tells.
    if (m_buffer->frameGoesOut(m_sequence))
        m_port->sendData(frame);
}

bool BootLoaderLink::connect()
{
    sendSyncByte();
    const QByteArray frame = CmdConnect();
    return sendCmdOrData(frame, frame.size());
}

bool BootLoaderLink::queryVersion()
{
    if (waitForAnswer() != Verdict::Ack)
        return false;
    // Before the next frame goes out, since what arrives then answers that one.
    if (!m_buffer->completeChunk(m_sequence, kVersionByte + 1, m_timings.answerGap)) {
        waitForDelivery();
        m_buffer->completeChunk(m_sequence, kVersionByte + 1, 0ms);
    }
    transmit(CmdQueryVersion());
    return true;
}

std::optional<qint32> BootLoaderLink::reportedVersion() const
{
    if (m_buffer->byteAt(0) != AckByte)
        return std::nullopt;
    return m_buffer->byteAt(kVersionByte);
}

void BootLoaderLink::keepSecondAnswer()
{
    const quint8 second = m_buffer->byteAt(1);
    if (second == AckByte || second == NakByte)
        m_buffer->splitChunk();
}

QStringList BootLoaderLink::noAnswerTexts() const
{
    return gotNoAnswer() ? QStringList(texts::kUpdateFailed) : QStringList();
}

void BootLoaderLink::tell(const std::function<void(UpdateObserver &)> &call)
{
    onMainThread([&](UpdateObserver *observer) {
        if (observer)
            call(*observer);
    });
}

void BootLoaderLink::onMainThread(const std::function<void(UpdateObserver *)> &call)
{
    MainQueue::instance().postAndWait([&] {
        if (isCurrent())
            call(m_observer.get());
    });
}

void BootLoaderLink::lowerRts()
{
    m_buffer->unlessSucceeded(m_sequence, [this] { m_port->setRTS(false); });
}

void BootLoaderLink::scheduleRtsLow()
{
    GlobalQueue::instance().postAfter(m_timings.resetPulse,
                                      [link = *this]() mutable { link.lowerRts(); });
}

} // namespace vorn
