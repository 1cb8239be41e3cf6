#pragma once

#include "firmware/PackageProblem.h"

#include <QString>

namespace vorn {

// What the package download tells whoever shows it. Called on the main thread.
class PackageObserver
{
public:
    enum class Phase { Connecting, Receiving, Unpacking };
    enum class Outcome { Installed, UpToDate, Failed };

    // A status line that replaces the one before.
    virtual void showText(const QString &text) = 0;
    // How far a download is. `total` is 0 while it is not known how much there is to do.
    virtual void packageProgress(Phase phase, qint64 received, qint64 total) = 0;
    // A download is over. `problem` says why it failed, also where no status line does.
    virtual void packageEnded(Outcome outcome, const PackageProblem &problem) = 0;

protected:
    virtual ~PackageObserver() = default;
};

} // namespace vorn
