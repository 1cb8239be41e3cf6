#pragma once

#include "platform/WeakDelegate.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace vorn {

// How far an update has come.
enum class UpdateStep {
    Connect,
    QueryVersion,
    ReadImage,
    Download,
    Header,
    Erase,
    Data,
    LastData,
    Finish,
};

// How an update run ended, as facts; the texts are shown separately.
struct UpdateResult
{
    enum class Outcome {
        Success,
        NoFirmwareChosen,
        ImageUnusable,
        Refused, // the device answered NakByte
        TimedOut,
        PortClosed,
    };

    Outcome outcome = Outcome::Success;
    UpdateStep step = UpdateStep::Finish;
    qint64 frame = -1;   // index of the data frame that was not released, -1 outside the data
    QString description; // one line with the cause, empty on success
    QStringList texts;   // the status texts that the end shows, in order; a refusal may have none
    // The end pulls RTS low again: on success, to start the new firmware, and when the device did
    // not confirm the last of the data.
    bool lowersRts = false;

    bool succeeded() const { return outcome == Outcome::Success; }
};

// Hears of sequences on the main thread; held weakly.
class UpdateObserver : public DelegateBase
{
public:
    // A status text; the sequence goes on when the call returns.
    virtual void showUpdateText(const QString &text) = 0;
    // A run has begun: what was shown of an earlier one is past.
    virtual void updateDidBegin() = 0;
    // 0 to 100, never less than before in one run.
    virtual void updateDidProgress(int percent) = 0;
    // The device may be erasing; how long that takes is not known.
    virtual void updateIsErasing() = 0;
    virtual void updateDidEnd(const UpdateResult &result) = 0;
    // A version query has ended, with or without an answer. Not told of one that a run took over
    // from.
    virtual void versionQueryDidEnd() = 0;

protected:
    ~UpdateObserver() override = default;
};

} // namespace vorn
