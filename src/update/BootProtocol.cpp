#include "update/BootProtocol.h"

#include "update/Frames.h"

#include <utility>

namespace vorn {
namespace {

UpdateFailureKind failureOf(LineEvent event)
{
    switch (event) {
    case LineEvent::Chunk:
        break;
    case LineEvent::Silence:
        return UpdateFailureKind::TimedOut;
    case LineEvent::Gone:
        return UpdateFailureKind::PortClosed;
    case LineEvent::Abandoned:
        return UpdateFailureKind::Abandoned;
    }
    return UpdateFailureKind::None;
}

} // namespace

BootProtocol::BootProtocol(DeviceLine &line, const BootParameters &parameters)
    : m_line(line), m_parameters(parameters), m_answerLimit(parameters.answerLimit)
{
}

UpdateFailureKind BootProtocol::connect()
{
    raiseRts();
    lowerRtsAfterPulse();
    m_line.pause(m_parameters.bootLoaderStart);
    const char sync = static_cast<char>(SyncByte);
    m_line.send(QByteArrayView(&sync, 1));
    const QByteArray frame = CmdConnect();
    return sendCmdOrData(frame, frame.size());
}

UpdateFailureKind BootProtocol::queryVersion()
{
    UpdateFailureKind failure = waitForAnswer();
    // Must be complete before the next frame is sent: what arrives later answers that one.
    if (failure == UpdateFailureKind::None)
        failure = completeChunk(static_cast<qsizetype>(m_parameters.versionByte) + 1);
    if (failure == UpdateFailureKind::None)
        m_line.send(CmdQueryVersion());
    return failure;
}

UpdateFailureKind BootProtocol::sendCmdOrData(QByteArrayView frame, qsizetype byteLenght)
{
    const UpdateFailureKind failure = waitForAnswer();
    if (failure == UpdateFailureKind::None)
        m_line.send(frame.first(byteLenght));
    return failure;
}

UpdateFailureKind BootProtocol::waitForAnswer()
{
    clearReceiveByte();
    m_waitBegan = m_line.now();
    const auto deadline = m_waitBegan + m_answerLimit;
    for (;;) {
        const UpdateFailureKind failure = failureOf(nextChunk(deadline));
        if (failure != UpdateFailureKind::None)
            return failure;
        if (byteAt(0) == AckByte)
            return UpdateFailureKind::None;
        if (byteAt(0) == NakByte)
            return UpdateFailureKind::Refused;
    }
}

void BootProtocol::keepSecondAnswer()
{
    if (byteAt(1) == AckByte || byteAt(1) == NakByte)
        m_secondAnswer = m_chunk.mid(1);
}

void BootProtocol::allowForErasing(bool erasing)
{
    m_answerLimit = erasing ? m_parameters.eraseLimit : m_parameters.answerLimit;
}

std::chrono::milliseconds BootProtocol::waited() const
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(m_line.now() - m_waitBegan);
}

void BootProtocol::lowerRtsAfterPulse()
{
    m_line.pause(m_parameters.resetPulse);
    m_line.setRts(false);
}

LineEvent BootProtocol::nextChunk(DeviceLine::Clock::time_point deadline)
{
    if (!m_secondAnswer)
        return m_line.waitForChunk(deadline, m_chunk);
    m_chunk = *std::exchange(m_secondAnswer, std::nullopt);
    return LineEvent::Chunk;
}

// Missing bytes count as zero.
quint8 BootProtocol::byteAt(std::size_t index) const
{
    return static_cast<quint8>(m_chunk.size() > static_cast<qsizetype>(index)
                                   ? m_chunk.at(static_cast<qsizetype>(index))
                                   : '\0');
}

// Appends chunks that follow closely: the line may split one answer into several chunks. A line
// that stays silent has sent a short answer; one that ends has sent none.
UpdateFailureKind BootProtocol::completeChunk(qsizetype length)
{
    const auto deadline = m_line.now() + m_parameters.answerGap;
    QByteArray piece;
    while (m_chunk.size() < length) {
        const LineEvent event = m_line.waitForChunk(deadline, piece);
        if (event == LineEvent::Silence)
            break;
        if (event != LineEvent::Chunk)
            return failureOf(event);
        m_chunk += piece;
    }
    return UpdateFailureKind::None;
}

} // namespace vorn
