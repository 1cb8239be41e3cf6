#pragma once

#include "simulator/AnswerPlan.h"
#include "simulator/DeviceReport.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <vector>

namespace vorn {

// Plays the device's side of an exchange that an updater has recorded: counts the bytes that come
// from the other side and answers where the recorded device did. It has neither a line nor a clock.
//
// The number of bytes decides, not their content, since the image may be another one of the same
// length. Only the recorded exchange's first bytes, read alone where others are due, are the other
// side beginning again, and so does the replay.
class Replay
{
public:
    // Takes the transcript from a text that may hold more, such as a whole saved log: lines that do
    // not have an entry's form are skipped.
    explicit Replay(const QString &text);

    struct Taken
    {
        bool begins = false; // the exchange has begun: answers that are still to be sent lapse
        std::vector<Answer> answers{};
    };
    // Takes bytes that were read at once.
    Taken take(QByteArrayView bytes);
    // One of these answers has been sent.
    void answered();
    // The next bytes are the first ones.
    void rewind();

    const ReplayReport &report() const { return m_report; }

private:
    struct Entry
    {
        std::chrono::microseconds at;
        enum class Kind { Sent, Received, Gone } kind;
        QByteArray bytes; // empty when only their number was recorded
        qsizetype length;
    };
    bool beginsAgain(QByteArrayView bytes) const;
    void countEntry();

    std::vector<Entry> m_entries; // the first one is Sent
    std::size_t m_next = 0;       // Sent, or the end
    qsizetype m_taken = 0;        // of its bytes
    bool m_differs = false;       // one of these is not the recorded one
    int m_replayed = 0;           // entries since the beginning
    ReplayReport m_report;
};

} // namespace vorn
