#pragma once

#include "update/BootParameters.h"
#include "update/DeviceLine.h"
#include "update/FirmwareImage.h"
#include "update/UpdateResult.h"

#include <functional>

namespace vorn {

// Observes a version query or an update. Called on the thread that runs it, which continues when
// the call returns.
class UpdateObserver
{
public:
    // The device reported its version, which is its model code.
    virtual void targetVersionDidArrive(qint32 targetVersion) = 0;
    // The update has reached another step and waits for its answer, or has sent another percent of
    // the image.
    virtual void updateDidProgress(const UpdateProgress &progress) = 0;
    // The sequence has ended. After a successful update, RTS is already high for the pulse that
    // restarts the device. Not called for an abandoned sequence.
    virtual void updateDidEnd(const UpdateResult &result) = 0;

protected:
    ~UpdateObserver() = default;
};

// Reads the image for a device of this model, just before the download starts. Called at most once,
// on the thread that runs the update.
using ImageReader = std::function<FirmwareImage(qint32 targetVersion)>;

// Resets the device into its boot loader and queries its version. Returns the result that the
// observer was given.
UpdateResult queryTargetVersion(DeviceLine &line, const BootParameters &parameters,
                                UpdateObserver &observer);

// Updates the device on the line, from the reset pulse to the final acknowledgement and the pulse
// that starts the new firmware. Any failure ends the update; there are no retries. Returns the
// result that the observer was given.
UpdateResult runUpdate(DeviceLine &line, const ImageReader &readImage,
                       const BootParameters &parameters, UpdateObserver &observer);

} // namespace vorn
