#pragma once

#include "firmware/PackageProblem.h"

#include <QByteArray>
#include <QString>

#include <filesystem>
#include <memory>

namespace vorn {

class StagingFolder;

// The way of one downloaded package into the caches directory: save, then install. Whatever happens
// on the way, the firmware folder holds either what it held before or all of the package. Stores
// may be at work side by side, each on a package of its own. One is used from one thread at a time,
// any.
class PackageStore
{
public:
    // `suggestedFilename` is the archive's name, `curDirName` that of the folder it belongs to.
    PackageStore(const QString &suggestedFilename, QString curDirName);
    ~PackageStore();
    PackageStore(const PackageStore &) = delete;
    PackageStore &operator=(const PackageStore &) = delete;

    // Writes the archive to the disk under its name, at once and whole. Something there that is not
    // a folder is replaced.
    PackageProblem save(const QByteArray &data);

    // Unpacks what was saved and puts it in the place of the folder "curDirName".
    PackageProblem install();

private:
    const QString m_suggestedFilename;
    const QString m_curDirName;
    std::unique_ptr<StagingFolder> m_staging;
    std::filesystem::path m_archive; // what install() unpacks
};

} // namespace vorn
