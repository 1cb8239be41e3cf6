#pragma once

#include "simulator/AnswerPlan.h"
#include "simulator/DeviceReport.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <vector>

namespace vorn {

// Replays the device's side of an exchange recorded by the updater: counts the bytes received and
// gives the recorded answers at the recorded places. It has neither a line nor a clock.
//
// Only the number of bytes matters, not their content, since the image may be a different one of
// the same length. The exception: if the first bytes of the recording are read on their own where
// other bytes are due, the other side has started over, and so does the replay.
class Replay
{
public:
    // The text may contain more than the transcript, such as a whole saved log: lines that do not
    // have the form of an entry are skipped.
    explicit Replay(const QString &text);

    struct Taken
    {
        bool begins = false; // the exchange has (re)started: drop answers not sent yet
        std::vector<Answer> answers{};
    };
    // Takes the bytes of one read.
    Taken take(QByteArrayView bytes);
    // One of the answers has been sent.
    void answered();
    // Starts over.
    void rewind();

    const ReplayReport &report() const { return m_report; }

private:
    struct Entry
    {
        std::chrono::microseconds at;
        enum class Kind { Sent, Received, Gone } kind;
        QByteArray bytes; // empty if only their number was recorded
        qsizetype length;
    };
    bool beginsAgain(QByteArrayView bytes) const;
    void countEntry();

    std::vector<Entry> m_entries; // the first one is Sent
    std::size_t m_next = 0;       // a Sent entry, or the end
    qsizetype m_taken = 0;        // bytes received for it
    bool m_differs = false;       // some of them are not those recorded
    int m_replayed = 0;           // entries since the start
    ReplayReport m_report;
};

} // namespace vorn
