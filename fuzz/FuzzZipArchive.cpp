// Any bytes as an archive: listed, unpacked into memory and into a folder with a link in it that
// leads out. Nothing may be written outside, nor more than the limits allow; a file that was
// reported as written is there, with the bytes that were unpacked into memory.
// An entry that has no place in the folder is skipped there, but may be a damaged one, which ends
// the unpacking into memory.

#include "fuzz/Fuzzing.h"
#include "ziparchive/ZipArchive.h"

using vorn::ArchiveFailureKind;
using vorn::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    constexpr qsizetype kMostBytes = 1 << 20;
    static const vorn::FuzzFolder work;
    const QString input = work.filePath(QStringLiteral("in.zip"));
    const QString out = work.filePath(QStringLiteral("out"));
    const QString link = out + QStringLiteral("/link");
    vorn::writeFile(input, vorn::FuzzInput(data, size).rest());
    vorn::writeFile(work.filePath(QStringLiteral("outside/kept.bin")), "kept");
    require(QDir().mkpath(out) && QFile::link(QStringLiteral("../outside"), link));

    ZipArchive archive;
    archive.setLimits({.entries = 64, .bytesOnDisk = kMostBytes, .bytesInMemory = kMostBytes});
    const bool isOpen = archive.UnzipOpenFile(input, QStringLiteral("secret"));
    const QStringList names = archive.getZipFileContents();
    require(names.size() <= 64);
    const auto inMemory = archive.UnzipFileToMemory();
    qsizetype bytes = 0;
    for (const QByteArray &contents : inMemory)
        bytes += contents.size();
    require(bytes <= kMostBytes);

    const bool isUnpacked = archive.UnzipFileTo(out, true);
    require(isOpen || (names.isEmpty() && !isUnpacked));
    require(!isUnpacked || static_cast<quint64>(names.size()) == archive.numFiles());
    const ArchiveFailureKind failure = archive.firstFailure().kind;
    const bool hasSkipped =
        failure != ArchiveFailureKind::None && failure != ArchiveFailureKind::BadEntry;
    require(QFile::remove(link));
    bytes = 0;
    QStringList written = archive.unzippedFiles();
    vorn::FuzzFiles files = vorn::filesIn(work.path());
    require(files.take(QStringLiteral("outside/kept.bin")) == "kept" &&
            files.remove(QStringLiteral("in.zip")) == 1);
    for (auto it = files.begin(); it != files.end(); ++it) {
        if (it.key().endsWith(u'/'))
            continue;
        bytes += it.value().size();
        require(it.key().startsWith(u"out/") && written.removeAll(work.filePath(it.key())) > 0);
        require(hasSkipped || it.value().isEmpty() || inMemory.values().contains(it.value()));
    }
    require(written.isEmpty() && bytes <= kMostBytes);
    require(archive.UnzipCloseFile() && QDir(out).removeRecursively());
    return 0;
}
