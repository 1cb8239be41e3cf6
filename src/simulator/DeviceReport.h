#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <vector>

namespace vorn {

// The times of one download, from the sync byte of its exchange.
struct DownloadTimes
{
    QDateTime startedAt; // the wall clock at the sync byte; invalid: no download yet
    std::chrono::microseconds toHeader{0};     // until the download header was complete
    std::chrono::microseconds toRelease{0};    // until the first data frame was released
    std::chrono::microseconds toLastAnswer{0}; // until the latest answer was written
    // From the writing of an answer to the first byte of the data frame it released: the time that
    // the updater and the way to it took.
    std::vector<std::chrono::microseconds> gaps;

    std::chrono::microseconds medianGap() const; // 0 when there is none
    std::chrono::microseconds longestGap() const;
};

// What a simulated device has seen so far. A value: safe to keep and to hand on.
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
    std::int64_t frames = 0; // frames received in good order, of every kind
    int downloadFrames = 0;  // data frames, the last one included, of the latest download
    int refusals = 0;        // answers FC, by a fault or for a reason
    int errorCount = 0;      // offences against the protocol
    QStringList errors;      // the first 100 of them

    QByteArray image;                // of the last completed update
    QByteArray partialImage;         // what arrived of a download that is not completed
    std::int64_t declaredLength = 0; // image length in the latest header
    DownloadTimes times;             // of the latest download

    // Lower-case hexadecimal SHA-256 of the image; empty without a completed update.
    QString imageSha256() const;
    QJsonObject toJson() const;
};

} // namespace vorn
