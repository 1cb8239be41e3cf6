#pragma once

#include "update/BootParameters.h"
#include "update/DeviceLine.h"
#include "update/FirmwareImage.h"
#include "update/UpdateResult.h"

#include <functional>

namespace vorn {

// Hears of a version query or an update on the thread that runs it, which goes on when a call
// returns.
class UpdateObserver
{
public:
    // The device told its version, which is its model code.
    virtual void targetVersionDidArrive(qint32 targetVersion) = 0;
    // The device's answer to another step is awaited, or another percent of the image was sent.
    virtual void updateDidProgress(const UpdateProgress &progress) = 0;
    // It has ended; after an update's success the pulse that restarts the device begins with it.
    // Not told of an abandoned one.
    virtual void updateDidEnd(const UpdateResult &result) = 0;

protected:
    ~UpdateObserver() = default;
};

// Reads the image when the device is about to get it. Called at most once.
using ImageReader = std::function<FirmwareImage()>;

// Resets the device into its boot loader and asks for its version. Returns what the observer was
// told at the end.
UpdateResult queryTargetVersion(DeviceLine &line, const BootParameters &parameters,
                                UpdateObserver &observer);

// Updates the device on the line, from the reset pulse to the final acknowledgement and the pulse
// that starts the new firmware. Failures end it; there are no retries. Returns what the observer
// was told at the end.
UpdateResult runUpdate(DeviceLine &line, const ImageReader &readImage,
                       const BootParameters &parameters, UpdateObserver &observer);

} // namespace vorn
