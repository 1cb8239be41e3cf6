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
    QByteArray name;
    QStringList errors;
    // What is in the destination afterwards.
    QStringList written;
    const char *password;
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

std::vector<HostileCase> hostileCases()
{
    std::vector<HostileCase> cases;
    const auto add = [&](const char *names, const QStringList &errors,
                         const QStringList &written = {"first.bin"}, const char *password = "") {
        for (const QByteArray &name : QByteArray(names).split(' '))
            cases.push_back({name, errors, written, password});
    };
    add("dotdot dotdot-deep dotdot-backslash dotdot-folder absolute absolute-backslash drive "
        "drive-relative through-link through-link-folder onto-link onto-pipe long-name long-path",
        kNotWritten, {"first.bin", "last.bin"});
    add("nul stored-sizes-differ zip64-size", kBadInformation);
    add("wrong-crc wrong-crc-stored claims-less", kBadCrc);
    add("claims-more packed-less damaged-data", kNotRead);
    add("damaged-header bzip2 strong-encryption encrypted", kNotOpened);
    add("encrypted-wrong-crc", kBadCrc, {"first.bin"}, "secret");
    add("encrypted-claims-more encrypted-damaged", kNotRead, {"first.bin"}, "secret");
    add("encrypted-short", kNotOpened, {"first.bin"}, "secret");
    add("count-too-small count-too-big", kBadInformation, {});
    add("truncated cut-in-the-data front-missing garbage not-an-archive nothing empty "
        "empty-with-comment",
        kNoArchive, {});
    add("ratio-bomb overlap-bomb two-directories nested", kNotOpened, {});
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostileArchive, ::testing::ValuesIn(hostileCases()),
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
