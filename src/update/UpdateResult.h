#pragma once

#include "platform/Failure.h"

#include <QtGlobal>

#include <chrono>

namespace vorn {

// The steps of an update, each named after the answer of the device that it waits for.
enum class UpdateStep {
    Synchronize,  // the answer to the sync byte
    Connect,      // the answer to the connect command, which carries the version
    QueryVersion, // the answer to the version query
    ReadImage,    // no answer: the image is read
    Download,     // the answer to the download command
    Erase,        // the end of the erase (erasing models only)
    Release,      // the release of the first data frame
    Data,         // the answer to a data frame
    Finish,       // the answer to the last frame: the device holds the image
};

enum class UpdateFailureKind {
    None,
    NoImageChosen,
    ImageUnreadable, // code: errno, text: path
    ImageEmpty,      // text: path
    ImageTooLong,    // more than 2^31 - 1 bytes; text: path
    Refused,         // the device answered NakByte
    TimedOut,        // it did not answer in time
    PortClosed,      // the port closed meanwhile
    Abandoned,       // nobody waits for the end any more
};
using UpdateFailure = Failure<UpdateFailureKind>;

// How an update, or a version query, ended.
struct UpdateResult
{
    UpdateFailure failure;
    // Where it ended: the step whose answer was a refusal or did not come.
    UpdateStep step = UpdateStep::Synchronize;
    // In UpdateStep::Data: which data frame, from 0. The last frame counts as one of `frames`.
    qint64 frame = 0;
    qint64 frames = 0;
    qint64 imageBytes = 0; // 0 until the image was read
    // From the download header on the device may have given up its old firmware.
    bool mayBeErased = false;
    // How long the last answer was waited for, whether it came or not.
    std::chrono::milliseconds waited{};
    // From the reset pulse to the end, and the part of it from the first data frame on.
    std::chrono::milliseconds elapsed{};
    std::chrono::milliseconds sending{};

    bool succeeded() const { return !failure; }
};

// How far an update has come.
struct UpdateProgress
{
    UpdateStep step = UpdateStep::Synchronize;
    // In UpdateStep::Data: the data frame sent last, from 0, of `frames`, the last frame included.
    qint64 frame = 0;
    qint64 frames = 0;
    // Of the image, 0 to 99 and never less than before; 100 is success alone.
    int percent = 0;
    // How long the awaited answer may take.
    std::chrono::milliseconds limit{};
};

} // namespace vorn
