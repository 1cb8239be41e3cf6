#pragma once

#include "firmware/PackageProblem.h"

#include <QByteArray>

#include <filesystem>
#include <memory>

namespace vorn {

class StagingFolder;

// Takes one downloaded package into the caches directory: save(), then install(). Whatever happens
// on the way, the firmware folder holds either what it held before or the complete package. Stores
// of several packages may be used at the same time; one object is used from one thread at a time.
class PackageStore
{
public:
    // `suggestedFilename` is the archive's name, `curDirName` that of the folder it belongs to.
    PackageStore(const QString &suggestedFilename, const QString &curDirName);
    ~PackageStore();
    PackageStore(const PackageStore &) = delete;
    PackageStore &operator=(const PackageStore &) = delete;

    // Writes the archive atomically to the caches directory under its name, replacing anything
    // there but a folder.
    PackageProblem save(const QByteArray &data);

    // Unpacks the archive and publishes its folders. Once, after a successful save().
    PackageProblem install();

private:
    const QString m_suggestedFilename;
    const QString m_curDirName;
    std::unique_ptr<StagingFolder> m_staging;
    std::filesystem::path m_archive; // what install() unpacks
};

} // namespace vorn
