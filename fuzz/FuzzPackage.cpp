// Any bytes as a package: saved and installed as after a download. The caches directory then holds
// what it held before, or the firmware folder with files from the archive, and nothing else that
// the program did not make.
//
// The input: which name the package has, then the archive.

#include "firmware/FirmwareFolder.h"
#include "firmware/PackageStore.h"
#include "fuzz/Fuzzing.h"
#include "ziparchive/ZipArchive.h"

using vorn::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const vorn::FuzzFolder work;
    const QString caches = work.filePath(QStringLiteral("caches"));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(caches));
    const QString names[] = {vorn::kFirmwareFolderName, QStringLiteral("fresh"),
                             QStringLiteral("published"), QStringLiteral("foreign")};
    const vorn::FuzzFiles before = {
        {"VornUpdate2/", {}}, {"VornUpdate2/old.bin", "old firmware"},
        {"published/", {}},   {"published/.published-by-vornupdater", {}},
        {"foreign/", {}},     {"foreign/kept.bin", "kept"}};
    require(QDir(caches).removeRecursively());
    for (auto it = before.begin(); it != before.end(); ++it)
        if (!it.key().endsWith(u'/'))
            vorn::writeFile(caches + u'/' + it.key(), it.value());

    vorn::FuzzInput input(data, size);
    const QString &name = names[input.byte() % 4];
    const QString archiveName = name + QStringLiteral(".zip");
    const QByteArray bytes = input.rest().toByteArray();
    vorn::PackageStore store(archiveName, name);
    require(!store.save(bytes));
    const bool isInstalled = !store.install();

    vorn::FuzzFiles after = vorn::filesIn(caches);
    require(after.take(archiveName) == bytes);
    require(vorn::filesIn(work.path()).size() == after.size() + 2);
    if (!isInstalled) {
        require(after == before);
        return 0;
    }
    require(name != u"foreign");
    require(after.contains(QStringLiteral("VornUpdate2/")));
    require(after.contains(QStringLiteral("VornUpdate2/old.bin")) || name == names[0]);
    ZipArchive archive;
    require(archive.UnzipOpenFile(caches + u'/' + archiveName));
    const auto unpacked = archive.UnzipFileToMemory();
    for (auto it = after.begin(); it != after.end(); ++it) {
        const QString top = it.key().section(u'/', 0, 0);
        require(it.key().contains(u'/') &&
                (top == name || top == names[0] || before.contains(it.key())));
        require(it.value().isEmpty() || it.value() == before.value(it.key()) ||
                unpacked.values().contains(it.value()));
    }
    return 0;
}
