#pragma once

#include "simulator/BootFrames.h"
#include "simulator/DeviceOptions.h"

#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace vorn {

// What a run of bytes came to.
struct BootEvent
{
    enum class Verdict {
        Accepted, // to be acknowledged
        Refused,  // to be refused
        Ignored   // no answer
    };
    BootStep step = BootStep::Sync; // Sync, Connect, Version, Download, Header, Frame or Last
    Verdict verdict = Verdict::Accepted;
    int frame = 0; // the number of the data or last frame in its download, from 1
    QString error; // the offence, if it is one; an accepted frame can offend too, by coming early
    // The image bytes of an accepted data or last frame; valid until the boot loader is used again.
    std::span<const std::uint8_t> data{};
};

// The boot loader's side of the protocol, without line and clock: bytes go in, events come out.
//
// Each frame says its own length, so frames out of order are recognised too. At a frame's border a
// sync byte begins a new exchange, as the reset line would. One case is ambiguous: a last frame of
// 243 image bytes begins with the value of the sync byte. There it counts as the frame's, unless
// nothing follows (silence()).
class BootLoader
{
public:
    explicit BootLoader(qsizetype flashSize);

    struct Taken
    {
        std::size_t count; // of the bytes given
        std::optional<BootEvent> event;
    };
    // Takes bytes up to the first event, at least one of them.
    Taken take(std::span<const std::uint8_t> bytes);

    // Whether a frame has begun and its end is missing.
    bool insideFrame() const { return m_filled > 0; }
    // Whether the next frame was released by an acknowledgement.
    bool isReleased() const { return m_released; }
    // Gives up the unfinished frame. When its last byte was a sync byte that begins an exchange:
    // whoever sends one waits for the answer.
    BootEvent silence();

    // The acknowledgement that lets the other side send the next frame has been written.
    void release() { m_released = true; }
    // The power went: a new exchange is due.
    void powerOff();

    qint64 declaredLength() const { return m_declared; } // of the image, in the latest header

private:
    int dueCount() const; // the count byte of the frame that is due
    BootEvent beginExchange();
    BootEvent judge();
    QString frameProblem() const;
    QString headerProblem() const;
    BootEvent accept();
    Taken skipToSync(std::span<const std::uint8_t> bytes);

    qsizetype m_flashSize;
    // The frame that is due: Sync, Connect, Version, Download, Header or Frame (any data frame).
    BootStep m_due = BootStep::Sync;
    bool m_released = false;
    bool m_early = false; // the frame in hand came before its release
    std::array<std::uint8_t, boot::MaxFrameLength> m_frame{};
    std::size_t m_filled = 0;
    int m_frames = 0;
    qint64 m_declared = 0;
    qint64 m_received = 0;
};

} // namespace vorn
