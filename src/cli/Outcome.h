#pragma once

#include "app/Causes.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace vorn {

// How the program ends. Scripts rely on the numbers.
using ExitCode = int;
inline constexpr ExitCode kDone = 0;
inline constexpr ExitCode kSeveralWithFailures = 1; // several devices, and at least one failed
inline constexpr ExitCode kUsage = 2;
inline constexpr ExitCode kNoDevice = 3;
inline constexpr ExitCode kCannotOpen = 4;
inline constexpr ExitCode kNoAnswer = 5;
inline constexpr ExitCode kRefused = 6;
inline constexpr ExitCode kUnplugged = 7;
inline constexpr ExitCode kBadImage = 8;
inline constexpr ExitCode kDownloadFailed = 9;
inline constexpr ExitCode kInterrupted = 10;
inline constexpr ExitCode kOutputLost = 11; // nothing else went wrong
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
