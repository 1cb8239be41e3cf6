#pragma once

#include "firmware/PackageProblem.h"

namespace vorn {

// Follows the download of packages. Called on the main thread. Each download ends with exactly one
// of packageIsUpToDate(), packageDidFail() and packageWasInstalled(), in which the PackageDownload
// may not be destroyed.
class PackageObserver
{
public:
    // The response's headers are here. `total` is the body's length, 0 when unknown.
    virtual void packageResponseDidArrive(qint64 total) = 0;
    // `received` bytes of the body are here, of `total` as above.
    virtual void packageDidProgress(qint64 received, qint64 total) = 0;
    // The whole body is here; saving and unpacking it begins.
    virtual void packageWillUnpack() = 0;

    // The server's package is the one that was installed last. Nothing was downloaded.
    virtual void packageIsUpToDate() = 0;
    // `showsInStatus` is false where a status line keeps its text: after an accepted response the
    // last progress figure stays; and a failure without a response is not shown while a download
    // was accepted before, or the last response's package is the installed one.
    virtual void packageDidFail(const PackageProblem &problem, bool showsInStatus) = 0;
    // The package is in place.
    virtual void packageWasInstalled() = 0;

    // After packageWasInstalled(), when the package's date is stored: the firmware folder is to be
    // scanned again.
    virtual void firmwareFolderDidChange() {}

protected:
    virtual ~PackageObserver() = default;
};

} // namespace vorn
