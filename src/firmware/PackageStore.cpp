#include "firmware/PackageStore.h"

#include "firmware/FirmwareFolder.h"
#include "firmware/PackagePublisher.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "platform/FileDescriptor.h"
#include "ziparchive/ZipArchive.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vorn {

namespace fs = std::filesystem;

namespace {

// 0 or an errno.
int writeAll(const fs::path &path, const QByteArray &data)
{
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.isValid())
        return errno;
    for (qsizetype done = 0; done < data.size();) {
        const ssize_t count = ::write(file.get(), data.constData() + done,
                                      static_cast<std::size_t>(data.size() - done));
        if (count < 0 && errno != EINTR)
            return errno;
        done += std::max<ssize_t>(count, 0);
    }
    if (::fsync(file.get()) != 0 || file.reset() != 0)
        return errno;
    return 0;
}

PackageProblem archiveProblem(const ArchiveFailure &failure)
{
    switch (failure.kind) {
    case ArchiveFailureKind::None:
        return {};
    case ArchiveFailureKind::NoArchive:
        return {PackageProblemKind::NotAnArchive, 0, failure.text};
    case ArchiveFailureKind::TooLarge:
        return {PackageProblemKind::TooLarge, 0, failure.text};
    case ArchiveFailureKind::NotRead:
    case ArchiveFailureKind::NotWritten:
        return {PackageProblemKind::FileSystem, failure.code, failure.text};
    case ArchiveFailureKind::BadEntry:
        return {PackageProblemKind::BadEntry, 0, failure.text};
    case ArchiveFailureKind::Outside:
        return {PackageProblemKind::EntryOutside, 0, failure.text};
    case ArchiveFailureKind::NameTaken:
        return {PackageProblemKind::EntryNameTaken, 0, failure.text};
    }
    return {};
}

// Unpacks the archive `filePath` into the folder `path` when it has an entry for its own top
// folder, `curDirName`, else into "VornUpdate2" in there. Any error fails it, also one that leaves
// the archive's own result a success.
PackageProblem decompressionFileToPath(const QString &path, const QString &filePath,
                                       const QString &curDirName)
{
    ZipArchive archive;
    archive.UnzipOpenFile(filePath);
    const bool hasTopFolder = archive.getZipFileContents().contains(curDirName + u'/');
    archive.UnzipFileTo(hasTopFolder ? path : path + u'/' + kFirmwareFolderName, true);
    return archiveProblem(archive.firstFailure());
}

} // namespace

PackageStore::PackageStore(const QString &suggestedFilename, const QString &curDirName)
    : m_suggestedFilename(suggestedFilename), m_curDirName(curDirName)
{
}

PackageStore::~PackageStore() = default;

PackageProblem PackageStore::save(const QByteArray &data)
{
    m_staging = StagingFolder::create();
    int error = errno;
    if (!m_staging)
        return {PackageProblemKind::FileSystem, error, cachesDirectory()};
    m_archive = m_staging->file("package.zip");
    error = writeAll(m_archive, data);
    if (error != 0)
        return {PackageProblemKind::FileSystem, error, QString::fromStdString(m_archive)};

    // A hard link to the saved file, so that this package is unpacked even when another one is
    // saved under its name meanwhile. A file system without links gets the file moved.
    const fs::path target = m_staging->destination() / m_suggestedFilename.toStdString();
    const fs::path second = m_staging->file("second-name.zip");
    const bool isLinked = ::link(m_archive.c_str(), second.c_str()) == 0;
    if (::rename((isLinked ? second : m_archive).c_str(), target.c_str()) != 0) {
        error = errno;
        return {PackageProblemKind::FileSystem, error, QString::fromStdString(target)};
    }
    if (!isLinked)
        m_archive = target;
    return {};
}

PackageProblem PackageStore::install()
{
    // Removed at the end in any case.
    const auto staging = std::exchange(m_staging, nullptr);
    if (PackageProblem problem =
            decompressionFileToPath(QString::fromStdString(staging->content()),
                                    QString::fromStdString(m_archive), m_curDirName))
        return problem;
    return publishPackage(*staging, m_curDirName.toStdString());
}

} // namespace vorn
