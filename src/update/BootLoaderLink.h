#pragma once

#include "serial/ORSSerialPort.h"
#include "update/ReceiveBuffer.h"
#include "update/UpdateObserver.h"

#include <QByteArrayView>
#include <QStringList>

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
// acknowledged the one before. Used on the sequence's background thread; blocks while it waits. A
// sequence that is no longer current sends nothing and shows nothing.
class BootLoaderLink
{
public:
    BootLoaderLink(ORSSerialPortPtr port, std::shared_ptr<ReceiveBuffer> buffer,
                   ReceiveBuffer::Sequence sequence, WeakDelegate<UpdateObserver> observer,
                   const UpdateTimings &timings);

    bool isCurrent() const { return m_buffer->isCurrent(m_sequence); }

    // Sends SyncByte, unframed and without waiting.
    void sendSyncByte();
    // Waits for the device's acknowledgement of what was sent before, then sends the first
    // byteLenght bytes of the frame, which carries its checksum already. False when the device
    // refused, did not answer (noAnswerTexts() are to be shown then), or the sequence was
    // abandoned; lastVerdict() tells which.
    bool sendCmdOrData(QByteArrayView frame, qsizetype byteLenght);
    // Waits for an answer that releases nothing.
    Verdict waitForAnswer();

    // SyncByte and CmdConnect. True when both were sent.
    bool connect();
    // CmdQueryVersion, behind the whole answer to CmdConnect. True when it was sent.
    bool queryVersion();
    // The version that the device told in its answer to CmdConnect; nothing when that answer, the
    // chunk in the buffer, is none.
    std::optional<qint32> reportedVersion() const;
    // A second answer in the chunk that was judged last counts as one of its own. Also a refusal: a
    // device may refuse so soon that both are read at once.
    void keepSecondAnswer();

    // While the device may be erasing, answers take longer.
    void allowForErasing(bool erasing)
    {
        m_answerLimit = erasing ? m_timings.erase : m_timings.answer;
    }

    Verdict lastVerdict() const { return m_lastVerdict; }
    // The last wait ended without an answer.
    bool gotNoAnswer() const
    {
        return m_lastVerdict == Verdict::Timeout || m_lastVerdict == Verdict::LinkLost;
    }

    // What tells that a frame was not released for want of an answer; none when there was one.
    QStringList noAnswerTexts() const;
    // Calls the observer on the main thread, if it and the sequence are still there by then, and
    // returns afterwards.
    void tell(const std::function<void(UpdateObserver &)> &call);
    // The same also without an observer, which is null then.
    void onMainThread(const std::function<void(UpdateObserver *)> &call);

    void raiseRts() { m_port->setRTS(true); }
    // Ends a reset pulse, now or after the length of one. A later sequence's pulse stays untouched.
    void lowerRts();
    void scheduleRtsLow();

private:
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
