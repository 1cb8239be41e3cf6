#pragma once

#include "simulator/DeviceOptions.h"

#include <QString>

#include <array>
#include <cstdint>
#include <optional>
#include <span>

namespace vorn {

// The protocol's numbers as the device knows them. They are deliberately not shared with the
// updater: a mistake there must not be mirrored here.
namespace boot {

inline constexpr std::uint8_t kSync = 0xF4;
inline constexpr std::uint8_t kAck = 0xAF;
inline constexpr std::uint8_t kNak = 0xFC;
// From this model code on, the device erases its flash after the header and acknowledges twice.
inline constexpr int kFirstErasingModel = 2;

} // namespace boot

// What the boot loader made of the bytes it was given.
struct BootEvent
{
    enum class Verdict {
        Accepted, // to be acknowledged
        Refused,  // to be refused
        Ignored   // not to be answered
    };
    BootStep step = BootStep::Sync; // Sync, Connect, Version, Download, Header, Frame or Last
    Verdict verdict = Verdict::Accepted;
    // The protocol violation, if there was one. An accepted frame has one when it came too early.
    QString error{};
    int frame = 0; // number of the data frame (or last frame) in its download, from 1
    // The image bytes of an accepted frame; valid until the boot loader is used again.
    std::span<const std::uint8_t> data{};
};

// The boot loader's side of the protocol as a state machine: bytes go in, events come out. It has
// neither a line nor a clock.
//
// Frames carry their length, so frames that come out of order are recognised as such. A sync byte
// where a frame could begin starts a new exchange, as the reset line would. That is ambiguous only
// for a last frame of 243 image bytes, which begins with the same value: there the byte belongs to
// the frame unless nothing follows it (silence()).
class BootLoader
{
public:
    explicit BootLoader(qsizetype flashSize) : m_flashSize(flashSize) {}

    struct Taken
    {
        std::size_t count; // of the bytes given, at least one
        std::optional<BootEvent> event;
    };
    // Takes bytes up to and including those that make the first event.
    Taken take(std::span<const std::uint8_t> bytes);

    // Whether a frame has begun and is not complete.
    bool isInsideFrame() const { return m_filled > 0; }
    // Drops the unfinished frame. If its last byte is a sync byte, that begins an exchange.
    BootEvent silence();

    // Call this when an acknowledgement has been written: the other side may send its next frame.
    void release() { m_released = true; }
    // Power was lost: only a sync byte is accepted next.
    void powerOff();

    qint64 declaredLength() const { return m_declared; } // of the image, by the latest header

private:
    int dueCount() const; // the count byte of the frame that is due
    BootEvent beginExchange();
    BootEvent judge();
    QString frameProblem() const;
    QString headerProblem() const;
    BootEvent accept();

    // A frame is a count byte (which counts itself), the body, and the XOR of all these.
    static constexpr int kMaxFrameLength = 256;

    qsizetype m_flashSize;
    BootStep m_due = BootStep::Sync; // Frame stands for the last frame, too
    bool m_released = false;
    bool m_early = false; // the frame being received began before its release
    std::array<std::uint8_t, kMaxFrameLength> m_frame{};
    std::size_t m_filled = 0;
    int m_frames = 0;
    qint64 m_declared = 0;
    qint64 m_received = 0;
};

} // namespace vorn
