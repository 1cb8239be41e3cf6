#pragma once

#include <QByteArrayView>
#include <QString>

#include <array>
#include <chrono>
#include <deque>
#include <mutex>

namespace vorn {

// A record of what a sequence (a version query or an update) did on its line, with times: changes
// of RTS, bytes sent, chunks taken, and waits without one. docs/protocol.md describes its text
// form. Thread-safe: it can be read while the sequence still adds to it.
class Transcript
{
public:
    using Time = std::chrono::steady_clock::time_point;
    enum class Kind : quint8 { Sent, Received, RtsHigh, RtsLow, Silence, Gone };

    // Limits the memory for huge images: in each direction, the content of bytes beyond these is
    // not kept, only their number.
    static constexpr qsizetype kKeptBytes = qsizetype{8} << 20;

    // The first entry's time becomes time zero. `bytes` is for Sent and Received only.
    void add(Kind kind, Time when, QByteArrayView bytes = {});

    bool isEmpty() const;
    // One entry per line, such as "0.020514 > F4": the time in seconds, then ">" (sent to the
    // device) or "<" (received) and the bytes, or "RTS high", "RTS low", "silence" or "gone". Bytes
    // whose content was not kept appear as "(252 bytes)". Empty if nothing was recorded.
    QString text() const;

private:
    struct Entry
    {
        std::chrono::duration<qint64, std::micro> at;
        quint32 length;
        Kind kind;
        bool isKept;
    };

    mutable std::mutex m_mutex;
    Time m_began;
    // Deques grow without copying, which would hold up a frame for milliseconds.
    std::deque<Entry> m_entries;
    std::deque<char> m_bytes;               // of all kept entries
    std::array<qsizetype, 2> m_keptBytes{}; // sent, received
};

} // namespace vorn
