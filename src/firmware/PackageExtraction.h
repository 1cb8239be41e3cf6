#pragma once

#include "firmware/PackageProblem.h"

#include <QString>

namespace vorn {

// Unpacks a package so that its files form the firmware folder. An object is used from one thread
// at a time, any.
class PackageExtraction
{
public:
    // `curDirName`: the name that the package's own top folder would have.
    explicit PackageExtraction(QString curDirName) : m_curDirName(std::move(curDirName)) {}

    // Unpacks the archive `filePath` into the folder `path` when it has an entry for its own top
    // folder, else into "VornUpdate2" in there. True when all of it was unpacked.
    bool decompressionFileToPath(const QString &path, const QString &filePath);

    // Why the last unpacking failed.
    const PackageProblem &problem() const { return m_problem; }

private:
    const QString m_curDirName;
    PackageProblem m_problem;
};

} // namespace vorn
