#pragma once

#include "update/BootParameters.h"
#include "update/DeviceLine.h"
#include "update/UpdateResult.h"

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>
#include <optional>

namespace vorn {

// The updater's side of the boot loader's protocol on one line: sends frames, each only after the
// device has acknowledged what came before; docs/protocol.md shows an exchange. Knows neither
// window nor thread.
class BootProtocol
{
public:
    // Both outlive the object.
    BootProtocol(DeviceLine &line, const BootParameters &parameters);

    // The pulse on RTS that resets the device, the sync byte, and the connect command once the
    // device is ready. None when all was sent.
    UpdateFailureKind connect();
    // The version query, once the device has accepted the connection. None when it was sent.
    UpdateFailureKind queryVersion();
    // What the answer to the connect command said, right after queryVersion() sent its frame.
    qint32 reportedVersion() const { return byteAt(m_parameters.versionByte); }

    // Waits for the acknowledgement of what was sent before, then sends the first byteLenght bytes
    // of the frame, which carries its checksum already. None when it was sent.
    UpdateFailureKind sendCmdOrData(QByteArrayView frame, qsizetype byteLenght);
    // Waits for an acknowledgement that releases nothing. None when it came.
    UpdateFailureKind waitForAnswer();
    // Lets a second answer in the chunk that was judged last count as one of its own, also when it
    // is a refusal: a device may refuse so soon that both are read at once.
    void keepSecondAnswer();

    // While the device may be erasing, answers take longer.
    void allowForErasing(bool erasing);
    std::chrono::milliseconds answerLimit() const { return m_answerLimit; }
    // The time since the last wait for an acknowledgement began.
    std::chrono::milliseconds waited() const;

    void raiseRts() { m_line.setRts(true); }
    // RTS low, after the length of a reset pulse.
    void lowerRtsAfterPulse();

private:
    // Forgets the chunk that was judged last.
    void clearReceiveByte() { m_chunk.clear(); }
    LineEvent nextChunk(DeviceLine::Clock::time_point deadline);
    quint8 byteAt(std::size_t index) const;
    void completeChunk(qsizetype length);

    DeviceLine &m_line;
    const BootParameters &m_parameters;
    std::chrono::milliseconds m_answerLimit;
    DeviceLine::Clock::time_point m_waitBegan{};
    QByteArray m_chunk;                       // the one that was judged last
    std::optional<QByteArray> m_secondAnswer; // judged before anything else arrives
};

} // namespace vorn
