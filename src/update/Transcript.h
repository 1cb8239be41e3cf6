#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <array>
#include <chrono>
#include <mutex>
#include <vector>

namespace vorn {

// What one sequence (a version query or an update) did on its line, in order and with times: the
// pulses, the bytes sent, the chunks taken, and the waits that brought none. docs/protocol.md shows
// one as text. Recorded on the sequence's thread; any thread may read it, also while it grows.
class Transcript
{
public:
    using Time = std::chrono::steady_clock::time_point;
    enum class Kind : quint8 { Sent, Received, RtsHigh, RtsLow, Silence, Gone };

    // In each direction the first kKeptBytes are kept; of later ones only their number is. Beyond
    // that an entry takes 16 bytes.
    static constexpr qsizetype kKeptBytes = qsizetype{8} << 20;

    // The first entry's time is the beginning. `bytes` are for Sent and Received only.
    void add(Kind kind, Time when, QByteArrayView bytes = {});

    bool isEmpty() const;
    // One entry a line, such as "0.020514 > F4": seconds from the beginning, then ">" (sent to the
    // device) or "<" (received) and the bytes, "RTS high", "RTS low", "silence" or "gone". Bytes
    // that were not kept are "(252 bytes)".
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
    std::vector<Entry> m_entries;
    QByteArray m_bytes;                     // of the entries that are kept, one behind the other
    std::array<qsizetype, 2> m_keptBytes{}; // sent, received
};

} // namespace vorn
