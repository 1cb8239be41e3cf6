#pragma once

#include "serial/ORSSerialPort.h"
#include "update/ReceiveBuffer.h"
#include "update/UpdateObserver.h"

#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace vorn {

// How long things may take; programs use the defaults.
struct UpdateTimings
{
    // From RTS high to RTS low, which resets the device, and from there to the first byte.
    std::chrono::milliseconds resetPulse{10};
    std::chrono::milliseconds bootLoaderStart{10};
    // An ordinary answer, and one for which the device may be erasing its flash.
    std::chrono::milliseconds answer{5000};
    std::chrono::milliseconds erase{30000};
    // How long the rest of a connect answer may lag behind its first bytes.
    std::chrono::milliseconds answerGap{20};
};

// One sequence's line to the device's boot loader: sends frames, each only after the device has
// acknowledged the one before. Used on the sequence's background thread; blocks while it waits.
class BootLoaderLink
{
public:
    BootLoaderLink(ORSSerialPortPtr port, std::shared_ptr<ReceiveBuffer> buffer,
                   ReceiveBuffer::Sequence sequence, WeakDelegate<UpdateObserver> observer,
                   const UpdateTimings &timings);

    // Sends SyncByte, unframed and without waiting.
    void sendSyncByte();
    // Waits for the device's acknowledgement of what was sent before, then sends the first byteLenght
    // bytes of the frame, which carries its checksum already. False when the device refused, did not
    // answer in time (a text tells), or the sequence was abandoned; lastVerdict() tells which.
    bool sendCmdOrData(QByteArrayView frame, qsizetype byteLenght);
    // Waits for an answer that releases nothing.
    Verdict waitForAnswer();

    // SyncByte, CmdConnect and CmdQueryVersion. True when all were sent; `connected` tells how far it
    // came.
    bool handshake(bool &connected);
    // The version that the device told in its answer to CmdConnect; nothing when that answer, the
    // chunk in the buffer, is none.
    std::optional<qint32> reportedVersion() const;
    // A second acknowledgement in the chunk that was judged last counts as an answer of its own.
    void keepSecondAnswer() { m_buffer->splitChunk(); }

    // While the device may be erasing, answers take longer.
    void allowForErasing(bool erasing) { m_answerLimit = erasing ? m_timings.erase : m_timings.answer; }

    Verdict lastVerdict() const { return m_lastVerdict; }
    bool portIsOpen() const { return m_port->isOpen(); }

    // Shows a status text and returns when it is shown.
    void showText(const QString &text);
    // Calls the observer on the main thread, if it and the sequence are still there by then, and
    // returns afterwards.
    void tell(const std::function<void(UpdateObserver &)> &call);

    // Ends a reset pulse: RTS low, after the length of a pulse.
    void scheduleRtsLow();
    void setRTS(bool on) { m_port->setRTS(on); }

private:
    bool awaitRelease();
    void transmit(QByteArrayView frame);

    const ORSSerialPortPtr m_port;
    const std::shared_ptr<ReceiveBuffer> m_buffer;
    const ReceiveBuffer::Sequence m_sequence;
    const WeakDelegate<UpdateObserver> m_observer;
    const UpdateTimings m_timings;
    std::chrono::milliseconds m_answerLimit;
    Verdict m_lastVerdict = Verdict::Ack;
};

} // namespace vorn
