#include "firmware/PackageExtraction.h"

#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageLog.h"
#include "ziparchive/ArchiveFile.h"
#include "ziparchive/CentralDirectory.h"
#include "ziparchive/ZipArchive.h"

#include <cerrno>

namespace vorn {

namespace {

// Keeps the first error, which the others follow from.
class FirstError : public ZipArchiveDelegate
{
public:
    void ErrorMessage(const QString &message) override
    {
        qCWarning(packagesLog).noquote() << "unpacking:" << message;
        if (text.isEmpty())
            text = message;
    }

    QString text;
};

// Whether what the archive claims to hold is more than the disk can still take.
bool lacksSpace(const QString &path, const QString &filePath)
{
    const auto file = ArchiveFile::open(filePath);
    QString reason;
    const auto directory =
        file ? CentralDirectory::read(*file, ArchiveLimits::kMaxEntries, reason) : std::nullopt;
    const auto available = ZipFileManager().availableBytesAtPath(path);
    return directory && available && directory->totalSize() > *available;
}

PackageProblem unpackingProblem(const QString &message, const QString &path,
                                const QString &filePath)
{
    if (message == u"Failed to open output file for writing" && lacksSpace(path, filePath))
        return PackageProblem::fromErrno(ENOSPC, path);
    return {PackageProblem::Kind::BadArchive, message};
}

} // namespace

bool PackageExtraction::decompressionFileToPath(const QString &path, const QString &filePath)
{
    const auto errors = std::make_shared<FirstError>();
    ZipArchive archive;
    archive.setDelegate(errors);
    const bool isArchive = archive.UnzipOpenFile(filePath);
    const QStringList names = archive.getZipFileContents();
    const bool hasTopFolder = names.contains(m_curDirName + u'/');
    const QString destination = hasTopFolder ? path : path + u'/' + firmwareFolderName;
    errors->text.clear();
    const bool isUnpacked = archive.UnzipFileTo(destination, true);
    archive.UnzipCloseFile();

    m_problem = {};
    if (!isArchive)
        m_problem = {PackageProblem::Kind::NotAnArchive, QStringLiteral("not a zip archive")};
    else if (!isUnpacked)
        m_problem = unpackingProblem(errors->text, path, filePath);
    return isUnpacked;
}

} // namespace vorn
