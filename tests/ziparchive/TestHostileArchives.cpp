#include "tests/ziparchive/ArchiveFixture.h"

#include <QFile>

#include <sys/stat.h>

namespace {

const QStringList kNotWritten = {"Failed to open output file for writing"};
const QStringList kNotOpened = {"Error occurs"};
const QStringList kBadInformation = {"Error occurs while getting file info"};
const QStringList kNotRead = {"Failed to read zip file"};
const QStringList kBadCrc = {"file was unzipped but failed crc check"};
const QStringList kNoArchive = {"Failed", "Error occurs"};

struct HostileCase
{
    const char *name;
    QStringList errors;
    // What is in the destination afterwards.
    QStringList written;
    const char *password = "";
};

class HostileArchive : public MadeArchiveTest, public ::testing::WithParamInterface<HostileCase>
{
};

// The walk goes on past what cannot be written, and stops at what cannot be read.
TEST_P(HostileArchive, FailsWithItsTextAndLeavesNothingOutsideAndNothingBroken)
{
    const QString outside = path("outside");
    ASSERT_TRUE(write(outside + "/kept.bin", "kept"));
    ASSERT_TRUE(write(out() + "/evil.bin", "old"));
    ASSERT_TRUE(QFile::link(outside, out() + "/link"));
    ASSERT_TRUE(QFile::link(outside + "/kept.bin", out() + "/filelink"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(out() + "/pipe").constData(), 0666), 0);

    open(GetParam().name);
    m_archive.setPassword(GetParam().password);
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_listener->errors, GetParam().errors);
    Tree files = tree(out());
    EXPECT_EQ(files.take("evil.bin"), "old");
    for (const char *given : {"link", "filelink", "pipe"})
        files.remove(given);
    EXPECT_EQ(QStringList(files.keys()), GetParam().written);
    EXPECT_EQ(m_archive.unzippedFiles().size(), files.size());
    EXPECT_EQ(tree(outside), (Tree{{"kept.bin", "kept"}}));
    QStringList beside = QDir(m_folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    EXPECT_EQ(beside, (QStringList{"out", "outside"}));
    EXPECT_TRUE(tree(s_shared->filePath("outside")).isEmpty());

    m_listener->errors.clear();
    const auto inMemory = m_archive.UnzipFileToMemory();
    if (GetParam().errors != kNotWritten) {
        EXPECT_EQ(m_listener->errors, GetParam().errors);
        EXPECT_FALSE(inMemory.contains("evil.bin"));
    }
}

const QStringList kAround = {"first.bin", "last.bin"};
const QStringList kFirst = {"first.bin"};

INSTANTIATE_TEST_SUITE_P(Paths, HostileArchive,
                         ::testing::Values(HostileCase{"dotdot", kNotWritten, kAround},
                                           HostileCase{"dotdot-deep", kNotWritten, kAround},
                                           HostileCase{"dotdot-backslash", kNotWritten, kAround},
                                           HostileCase{"dotdot-folder", kNotWritten, kAround},
                                           HostileCase{"absolute", kNotWritten, kAround},
                                           HostileCase{"absolute-backslash", kNotWritten, kAround},
                                           HostileCase{"drive", kNotWritten, kAround},
                                           HostileCase{"drive-relative", kNotWritten, kAround},
                                           HostileCase{"through-link", kNotWritten, kAround},
                                           HostileCase{"through-link-folder", kNotWritten, kAround},
                                           HostileCase{"onto-link", kNotWritten, kAround},
                                           HostileCase{"onto-pipe", kNotWritten, kAround},
                                           HostileCase{"long-name", kNotWritten, kAround},
                                           HostileCase{"long-path", kNotWritten, kAround}),
                         nameOf<HostileCase>);

INSTANTIATE_TEST_SUITE_P(Entries, HostileArchive,
                         ::testing::Values(HostileCase{"nul", kBadInformation, kFirst},
                                           HostileCase{"wrong-crc", kBadCrc, kFirst},
                                           HostileCase{"wrong-crc-stored", kBadCrc, kFirst},
                                           HostileCase{"claims-more", kNotRead, kFirst},
                                           HostileCase{"claims-less", kBadCrc, kFirst},
                                           HostileCase{"packed-less", kNotRead, kFirst},
                                           HostileCase{"stored-sizes-differ", kBadInformation,
                                                       kFirst},
                                           HostileCase{"damaged-data", kNotRead, kFirst},
                                           HostileCase{"damaged-header", kNotOpened, kFirst},
                                           HostileCase{"bzip2", kNotOpened, kFirst},
                                           HostileCase{"strong-encryption", kNotOpened, kFirst},
                                           HostileCase{"zip64-size", kBadInformation, kFirst}),
                         nameOf<HostileCase>);

INSTANTIATE_TEST_SUITE_P(
    Encrypted, HostileArchive,
    ::testing::Values(HostileCase{"encrypted", kNotOpened, kFirst},
                      HostileCase{"encrypted-wrong-crc", kBadCrc, kFirst, "secret"},
                      HostileCase{"encrypted-claims-more", kNotRead, kFirst, "secret"},
                      HostileCase{"encrypted-damaged", kNotRead, kFirst, "secret"},
                      HostileCase{"encrypted-short", kNotOpened, kFirst, "secret"}),
    nameOf<HostileCase>);

INSTANTIATE_TEST_SUITE_P(Archives, HostileArchive,
                         ::testing::Values(HostileCase{"count-too-small", kBadInformation, {}},
                                           HostileCase{"count-too-big", kBadInformation, {}},
                                           HostileCase{"truncated", kNoArchive, {}},
                                           HostileCase{"cut-in-the-data", kNoArchive, {}},
                                           HostileCase{"front-missing", kNoArchive, {}},
                                           HostileCase{"garbage", kNoArchive, {}},
                                           HostileCase{"not-an-archive", kNoArchive, {}},
                                           HostileCase{"nothing", kNoArchive, {}},
                                           HostileCase{"empty", kNoArchive, {}},
                                           HostileCase{"empty-with-comment", kNoArchive, {}}),
                         nameOf<HostileCase>);

INSTANTIATE_TEST_SUITE_P(Bombs, HostileArchive,
                         ::testing::Values(HostileCase{"ratio-bomb", kNotOpened, {}},
                                           HostileCase{"overlap-bomb", kNotOpened, {}},
                                           HostileCase{"two-directories", kNotOpened, {}},
                                           HostileCase{"nested", kNotOpened, {}}),
                         nameOf<HostileCase>);

class HostileLimits : public MadeArchiveTest
{
protected:
    static long peakKilobytes()
    {
        for (const QByteArray &line : read("/proc/self/status").split('\n'))
            if (line.startsWith("VmHWM:"))
                return line.simplified().split(' ').at(1).toLong();
        return 0;
    }
};

TEST_F(HostileLimits, UnpacksALargeFileInFlatMemory)
{
    ASSERT_TRUE(open("large"));
    ASSERT_TRUE(write("/proc/self/clear_refs", "5")); // the peak starts again at what is held now
    const long before = peakKilobytes();
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_LT(peakKilobytes() - before, 16 * 1024);
    EXPECT_EQ(QFileInfo(out() + "/large.bin").size(), 100 << 20);
}

TEST_F(HostileLimits, RefusesMoreEntriesAndBytesThanItsLimits)
{
    vorn::ArchiveLimits limits;
    limits.entries = 299;
    limits.bytesOnDisk = (100 << 20) - 1;
    limits.bytesInMemory = 1 << 20;
    m_archive.setLimits(limits);

    ASSERT_TRUE(open("many"));
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_listener->errors, kBadInformation);
    ASSERT_TRUE(m_archive.UnzipCloseFile());

    m_listener->errors.clear();
    ASSERT_TRUE(open("large"));
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_TRUE(m_archive.UnzipFileToMemory().isEmpty());
    EXPECT_EQ(m_listener->errors, kNotOpened + kNotOpened);
    EXPECT_FALSE(QFileInfo::exists(out()));
}

struct AlmostFullDisk : vorn::ZipFileManager
{
    std::optional<quint64> availableBytesAtPath(const QString &) const override { return 50 << 20; }
};

TEST_F(HostileLimits, WritesNothingWhenTheDiskHasNoSpaceForAll)
{
    ZipArchive archive(std::make_shared<AlmostFullDisk>());
    archive.setDelegate(m_listener);
    ASSERT_TRUE(archive.UnzipOpenFile(made() + "/large.zip"));
    EXPECT_FALSE(archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_listener->errors, kNotWritten);
    EXPECT_TRUE(tree(out()).isEmpty());
}

} // namespace
