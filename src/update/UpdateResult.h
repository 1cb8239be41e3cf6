#pragma once

#include "platform/Failure.h"

#include <QtGlobal>

#include <chrono>

namespace vorn {

// The steps of an update in their order, each named after the answer that it waits for.
enum class UpdateStep {
    Synchronize,  // the answer to the sync byte
    Connect,      // the answer to the connect command, which carries the version
    ReadImage,    // none: the image is being read
    QueryVersion, // the answer to the version query
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
    NoImageForModel, // no file is meant for the device; code: model code
    WrongModel,      // the file is meant for another model; code: the device's, text: path
    Refused,         // the device answered NakByte
    TimedOut,        // the device did not answer in time; code: DeviceSession::portError()
    PortClosed,      // the port closed during the update; code: likewise
    Interrupted,     // DeviceSession::interrupt()
    Abandoned,       // nobody is interested in the result any more
};
using UpdateFailure = Failure<UpdateFailureKind>;

// How an update, or a version query, ended.
struct UpdateResult
{
    UpdateFailure failure;
    // The step that failed because its answer was a refusal or did not come; Finish on success.
    UpdateStep step = UpdateStep::Synchronize;
    // In UpdateStep::Data: which data frame, from 0. The last frame counts as one of `frames`.
    qint64 frame = 0;
    qint64 frames = 0;
    qint64 imageBytes = 0; // 0 until the image was read
    // The download header was sent, so the device may have erased its old firmware.
    bool mayBeErased = false;
    // How long the update waited for the last answer, whether or not it came.
    std::chrono::milliseconds waited{};
    // From the reset pulse to the end, and from the first data frame to the end.
    std::chrono::milliseconds elapsed{};
    std::chrono::milliseconds sending{};

    bool succeeded() const { return !failure; }
};

// The progress of an update.
struct UpdateProgress
{
    UpdateStep step = UpdateStep::Synchronize;
    // In UpdateStep::Data: the latest data frame sent, from 0. The last frame counts as one of
    // `frames`.
    qint64 frame = 0;
    qint64 frames = 0;
    // Of the image, 0 to 99, never decreasing; only success counts as 100.
    int percent = 0;
    // How long the awaited answer may take.
    std::chrono::milliseconds limit{};
};

} // namespace vorn
