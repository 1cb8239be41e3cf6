#pragma once

#include "app/Causes.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace vorn {

// How the program ends. Scripts rely on the numbers.
enum ExitCode : int {
    kDone = 0,
    kSeveralWithFailures = 1, // several devices, and at least one failed
    kUsage = 2,
    kNoDevice = 3,
    kCannotOpen = 4,
    kNoAnswer = 5,
    kRefused = 6,
    kUnplugged = 7,
    kBadImage = 8,
    kDownloadFailed = 9,
    kInterrupted = 10,
};
// By its word.
ExitCode exitCodeOf(const Explanation &why);

// How something that the program was asked for has ended.
struct Outcome
{
    QString device{};                 // name; empty when it did not concern a device
    qint32 model = -1;                // -1: unknown
    QString file{};                   // the image's path, once it was chosen
    QByteArray sha256{};              // of the image, in hexadecimal
    Explanation why{};                // Cause::None: success
    int code = 0;                     // the errno behind a failure, 0 for none
    std::optional<UpdateStep> step{}; // where an update failed
    std::chrono::milliseconds elapsed{};
    QString text{};   // a success in words
    QString advice{}; // what to do about a failure, besides its cure

    bool succeeded() const { return why.cause == Cause::None; }
};

} // namespace vorn
