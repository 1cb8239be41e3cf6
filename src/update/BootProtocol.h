#pragma once

#include "update/BootParameters.h"
#include "update/DeviceLine.h"
#include "update/UpdateResult.h"

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>
#include <optional>

namespace vorn {

// The updater's side of the boot loader protocol on one line: sends each frame only after the
// device has acknowledged the one before. docs/protocol.md shows an exchange. Independent of
// windows and threads.
class BootProtocol
{
public:
    // Both must outlive the object.
    BootProtocol(DeviceLine &line, const BootParameters &parameters);

    // Resets the device by a pulse on RTS, sends the sync byte, and the connect command once the
    // device is ready. None if everything was sent.
    UpdateFailureKind connect();
    // Sends the version query once the device has accepted the connection. None if it was sent.
    UpdateFailureKind queryVersion();
    // The version in the answer to the connect command; valid right after queryVersion().
    qint32 reportedVersion() const { return byteAt(m_parameters.versionByte); }

    // Waits for the previous frame's acknowledgement, then sends the first byteLenght bytes of the
    // frame, which already has its checksum. None if it was sent.
    UpdateFailureKind sendCmdOrData(QByteArrayView frame, qsizetype byteLenght);
    // Waits for an acknowledgement after which no frame is sent. None if it came.
    UpdateFailureKind waitForAnswer();
    // Keeps a second answer (acknowledgement or refusal) in the latest chunk for the next wait: the
    // device may send it so soon that both are read at once.
    void keepSecondAnswer();

    // Selects the longer answer limit while the device may be erasing.
    void allowForErasing(bool erasing);
    std::chrono::milliseconds answerLimit() const { return m_answerLimit; }
    // Time since the latest wait for an acknowledgement began.
    std::chrono::milliseconds waited() const;

    void raiseRts() { m_line.setRts(true); }
    // Sets RTS low after the length of a reset pulse.
    void lowerRtsAfterPulse();

private:
    // Discards the latest chunk.
    void clearReceiveByte() { m_chunk.clear(); }
    LineEvent nextChunk(DeviceLine::Clock::time_point deadline);
    quint8 byteAt(std::size_t index) const;
    UpdateFailureKind completeChunk(qsizetype length);

    DeviceLine &m_line;
    const BootParameters &m_parameters;
    std::chrono::milliseconds m_answerLimit;
    DeviceLine::Clock::time_point m_waitBegan{};
    QByteArray m_chunk;                       // the latest
    std::optional<QByteArray> m_secondAnswer; // comes before the next chunk from the line
};

} // namespace vorn
