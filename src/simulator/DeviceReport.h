#pragma once

#include "simulator/AnswerPlan.h"
#include "simulator/BootLoader.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>

namespace vorn {

// The times of one download, counted from the sync byte of its exchange.
struct DownloadTimes
{
    QDateTime startedAt; // the wall clock at the sync byte; invalid: no download yet
    std::chrono::nanoseconds toHeader{0};     // until the download header was complete
    std::chrono::nanoseconds toRelease{0};    // until the first data frame was released
    std::chrono::nanoseconds toLastAnswer{0}; // until the latest answer was written
    // The longest time from writing an answer to the first byte of the data frame that it released,
    // which is the time taken by the updater and the line.
    std::chrono::nanoseconds longestGap{0};
};

// The progress of a replay. Only entries of bytes or "gone" count.
struct ReplayReport
{
    int entries = 0;     // in the transcript; 0: no replay
    int replayed = 0;    // in one go, at most
    int differences = 0; // entries whose received bytes were not those recorded
};

// What a simulated device has seen so far.
struct DeviceReport
{
    QString path;      // the link, or the terminal when there is no link
    QString slavePath; // the terminal itself
    bool plugged = false;
    int modelCode = 0;

    int opens = 0;           // how often a program opened the terminal
    bool inUse = false;      // whether one has it open now
    int exchanges = 0;       // sync bytes
    int updates = 0;         // downloads whose last acknowledgement was written
    std::int64_t frames = 0; // correct frames, of every kind
    int downloadFrames = 0;  // of those, the data frames (last one included) of the latest download
    int refusals = 0;        // answers FC, through a fault or for a reason
    int errorCount = 0;      // protocol violations
    QStringList errors;      // the first 100 of them

    QByteArray image;                // of the last completed update
    QByteArray partialImage;         // received so far of an update that is not completed
    std::int64_t declaredLength = 0; // image length in the latest header
    DownloadTimes times;             // of the latest download

    // A replaying device does not check what it receives, so most of the above stays empty.
    ReplayReport replay;

    // SHA-256 of the image in lower-case hexadecimal; empty without a completed update.
    QString imageSha256() const;
    QJsonObject toJson() const;
};

// Writes a device's report. Not thread-safe.
class DeviceJournal
{
public:
    using Time = std::chrono::steady_clock::time_point;

    DeviceReport &report() { return m_report; }
    const DeviceReport &report() const { return m_report; }

    void addError(const QString &error);
    // `begun` is when the frame's first byte was read, `ended` when its last bit arrived.
    void addEvent(const BootEvent &event, qint64 declaredLength, Time begun, Time ended);
    void addAnswer(const Answer &answer, Time when);
    void addUnplug();

private:
    DeviceReport m_report;
    QDateTime m_syncClock;
    Time m_syncTime;
    Time m_lastRelease;
    bool m_downloading = false;
};

} // namespace vorn
