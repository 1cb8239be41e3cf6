#include "tests/ziparchive/ArchiveFixture.h"

#include <sys/stat.h>

#include <cerrno>

namespace {

const QStringList kNotWritten = {"Failed to open output file for writing"};
const QStringList kNotOpened = {"Error occurs"};
const QStringList kBadInformation = {"Error occurs while getting file info"};
const QStringList kNotRead = {"Failed to read zip file"};
const QStringList kBadCrc = {"file was unzipped but failed crc check"};
const QStringList kNoArchive = {"Failed", "Error occurs"};

using HostileArchive = ArchiveTest;
using Kind = vorn::ArchiveFailureKind;

// The walk goes on past what cannot be written, and stops at what cannot be read.
TEST_F(HostileArchive, IsReportedAndLeavesNothingOutsideAndNothingBroken)
{
    struct Case
    {
        const char *names;
        QStringList errors;
        QStringList written = {"first.bin"};
        Kind kind = Kind::BadEntry;
        const char *password = "";
        const char *encoding = "GBK";
    };
    const Case cases[] = {
        {"dotdot dotdot-backslash dotdot-folder absolute drive through-link through-link-folder "
         "onto-link",
         kNotWritten,
         {"first.bin", "last.bin"},
         Kind::Outside},
        {"onto-pipe long-name long-path", kNotWritten, {"first.bin", "last.bin"}, Kind::NotWritten},
        {"nul-in-utf7", kNotWritten, {"first.bin", "last.bin"}, Kind::Outside, "", "UTF-7"},
        {"nul stored-sizes-differ zip64-size", kBadInformation},
        {"wrong-crc claims-less", kBadCrc},
        {"claims-more damaged-data", kNotRead},
        {"damaged-header bzip2 strong-encryption", kNotOpened},
        {"encrypted", kNotOpened, {}},
        {"encrypted-wrong-crc", kBadCrc, {"first.bin"}, Kind::BadEntry, "secret"},
        {"encrypted-claims-more", kNotRead, {"first.bin"}, Kind::BadEntry, "secret"},
        {"encrypted-short", kNotOpened, {"first.bin"}, Kind::BadEntry, "secret"},
        {"count-too-small count-too-big", kBadInformation, {}},
        {"truncated not-an-archive nothing empty", kNoArchive, {}, Kind::NoArchive},
        {"overlap-bomb nested", kNotOpened, {}},
        {"ratio-bomb", kNotOpened, {}, Kind::TooLarge},
    };
    const QByteArray outside = path("outside").toUtf8();
    for (const Case &c : cases) {
        for (const QString &name : QString(c.names).split(u' ')) {
            SCOPED_TRACE(qPrintable(name));
            writeTree(m_folder.path(), {{"outside/kept.bin", "kept"},
                                        {"out/evil.bin", "old"},
                                        {"out/link@", outside},
                                        {"out/filelink@", outside + "/kept.bin"}});
            ASSERT_EQ(::mkfifo(qPrintable(path("out/pipe")), 0666), 0);
            Tree expected = treeAt(m_folder.path());
            for (const QString &file : c.written)
                expected["out/" + file] = "data of an entry";

            m_listener->errors.clear();
            m_archive.setStringEncoding(c.encoding);
            open(name, c.password);
            EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
            EXPECT_EQ(m_listener->errors, c.errors);
            EXPECT_EQ(m_archive.firstFailure().kind, c.kind);
            EXPECT_EQ(treeAt(m_folder.path()), expected);
            EXPECT_EQ(m_archive.unzippedFiles().size(), c.written.size());
            EXPECT_TRUE(treeAt(made() + "/../outside").isEmpty());

            m_listener->errors.clear();
            EXPECT_FALSE(m_archive.UnzipFileToMemory().contains("evil.bin"));
            EXPECT_EQ(m_listener->errors, c.errors == kNotWritten ? QStringList() : c.errors);
            EXPECT_TRUE(m_archive.UnzipCloseFile());
        }
    }
}

long peakKilobytes()
{
    const QByteArray status = readFile("/proc/self/status");
    return status.mid(status.indexOf("VmHWM:")).simplified().split(' ').value(1).toLong();
}

TEST_F(HostileArchive, UnpacksALargeFileInFlatMemoryUnlessItsLimitsAreLower)
{
    ASSERT_TRUE(open("large"));
    writeFile("/proc/self/clear_refs", "5"); // resets the peak
    const long before = peakKilobytes();
    ASSERT_GT(before, 0);
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_LT(peakKilobytes() - before, 16 * 1024);
    EXPECT_EQ(QFileInfo(out() + "/large.bin").size(), 100 << 20);

    writeTree(out(), {});
    m_archive.setLimits({.entries = 299, .bytesOnDisk = (100 << 20) - 1, .bytesInMemory = 1 << 20});
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_TRUE(m_archive.UnzipFileToMemory().isEmpty());
    ASSERT_TRUE(open("many"));
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_listener->errors, kNotOpened + kNotOpened + kBadInformation);
    EXPECT_FALSE(QFileInfo::exists(out()));
}

struct AlmostFullDisk : vorn::ZipFileManager
{
    std::optional<quint64> availableBytesAtPath(const QString &) const override { return 50 << 20; }
};

TEST_F(HostileArchive, WritesNothingWhenTheDiskHasNoSpaceForAll)
{
    ZipArchive archive(std::make_shared<AlmostFullDisk>());
    archive.setDelegate(m_listener);
    ASSERT_TRUE(archive.UnzipOpenFile(made() + "/large.zip"));
    EXPECT_FALSE(archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_listener->errors, kNotWritten);
    EXPECT_EQ(archive.firstFailure().code, ENOSPC);
    EXPECT_TRUE(treeAt(out()).isEmpty());
}

} // namespace
