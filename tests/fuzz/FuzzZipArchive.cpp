// Any bytes as an archive: listed, unpacked into a folder and into memory. Besides what the
// sanitizers find, it stops when something is written outside of the folder, when a link or more
// than the limits allow is in it, or when a file that was reported as written is not there.

#include "ziparchive/ZipArchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace {

constexpr vorn::ArchiveLimits kLimits = {
    .entries = 64, .bytesOnDisk = 1 << 20, .bytesInMemory = 1 << 20};

void require(bool condition)
{
    if (!condition)
        std::abort();
}

QString makeWorkFolder()
{
    QLoggingCategory::setFilterRules(QStringLiteral("vorn.*=false"));
    QTemporaryDir folder(QStringLiteral("/dev/shm/fuzz_zip_archive-XXXXXX"));
    folder.setAutoRemove(false);
    require(folder.isValid());
    return folder.path();
}

void checkFiles(const QString &folder, const QStringList &files)
{
    for (const QString &file : files)
        require(QFileInfo(file).isFile());
    qint64 bytes = 0;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo item(it.next());
        require(!item.isSymLink() && (item.isFile() || item.isDir()));
        require(!item.fileName().startsWith(QStringLiteral(".unpacking-")) ||
                files.contains(item.filePath()));
        if (item.isFile())
            bytes += item.size();
    }
    require(bytes <= static_cast<qint64>(kLimits.bytesOnDisk));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QDir work(makeWorkFolder());
    const QString input = work.filePath(QStringLiteral("in.zip"));
    const QString out = work.filePath(QStringLiteral("out"));
    QFile file(input);
    require(file.open(QIODevice::WriteOnly));
    require(file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size)) ==
            static_cast<qint64>(size));
    file.close();

    ZipArchive archive;
    archive.setLimits(kLimits);
    const bool isOpen = archive.UnzipOpenFile(input, QStringLiteral("secret"));
    const QStringList names = archive.getZipFileContents();
    const bool isUnpacked = archive.UnzipFileTo(out, true);
    require(isOpen || (names.isEmpty() && !isUnpacked));
    require(!isUnpacked || static_cast<quint64>(names.size()) == archive.numFiles());
    checkFiles(out, archive.unzippedFiles());
    require(work.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
                .size() == (QFileInfo::exists(out) ? 2 : 1));
    qsizetype bytes = 0;
    for (const QByteArray &contents : archive.UnzipFileToMemory())
        bytes += contents.size();
    require(bytes <= static_cast<qsizetype>(kLimits.bytesInMemory));
    require(archive.UnzipCloseFile() && QDir(out).removeRecursively());
    return 0;
}
