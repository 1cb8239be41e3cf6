#include "tests/ziparchive/ArchiveFixture.h"

#include <QDateTime>

#include <tuple>

#include <sys/stat.h>
#include <utime.h>

namespace {

// How a tool packs the folder "pkg" into "a.zip".
struct Packer
{
    const char *name;
    const char *command;
    const char *password = "";
};

class PackedByTool : public ArchiveTest, public ::testing::WithParamInterface<Packer>
{
protected:
    void SetUp() override
    {
        QByteArray large;
        for (qint64 i = 0; i < 60'000; ++i)
            large += QByteArray::number(i * i % 9973);
        ASSERT_TRUE(write(path("pkg/VORN-1.bin"), large));
        ASSERT_TRUE(write(path("pkg/a/b/deep.bin"), "deep"));
        ASSERT_TRUE(write(path("pkg/a/empty.bin"), ""));
        // In UTF-8 no valid GBK: zip writes it without saying which of the two it is.
        ASSERT_TRUE(write(path(u"pkg/\u56fa.bin"_qs), QByteArray(5000, '\xff')));
        const utimbuf date = {.actime = 0, .modtime = kDate};
        ASSERT_EQ(utime(qPrintable(path("pkg/VORN-1.bin")), &date), 0);
        const QStringList command = QString(GetParam().command).split(u' ');
        run(command.first(), command.mid(1));
    }

    static constexpr time_t kDate = 1'690'000'000;
};

TEST_P(PackedByTool, UnpacksToTheSameFilesWithTheSameDates)
{
    ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), GetParam().password));
    ASSERT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(tree(out() + "/pkg"), tree(path("pkg")));
    EXPECT_EQ(QFileInfo(out() + "/pkg/VORN-1.bin").lastModified().toSecsSinceEpoch(), kDate);
    EXPECT_EQ(m_archive.unzippedFiles().size(), 4);
    EXPECT_EQ(m_listener->errors, QStringList());

    const auto inMemory = m_archive.UnzipFileToMemory();
    EXPECT_EQ(inMemory.size(), 3); // all but the empty one
    EXPECT_EQ(inMemory.value(u"pkg/\u56fa.bin"_qs), QByteArray(5000, '\xff'));
    EXPECT_EQ(m_archive.getZipFileContents().size(), static_cast<qsizetype>(m_archive.numFiles()));
    EXPECT_TRUE(m_archive.UnzipCloseFile());
    EXPECT_TRUE(m_archive.password().isEmpty());
}

class EncryptedByTool : public PackedByTool
{
};

TEST_P(EncryptedByTool, LeavesNoWrongBytesWithoutTheRightPassword)
{
    // One wrong password in 256 passes the check byte, and must fail by what it makes of the data.
    for (int i = 0; i < 600; ++i) {
        m_listener->errors.clear();
        const QString password = i == 0 ? QString() : QString("wrong%1").arg(i);
        ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), password));
        ASSERT_FALSE(m_archive.UnzipFileTo(out(), true));
        ASSERT_EQ(m_listener->errors.size(), 1);
        for (const QString &file : m_archive.unzippedFiles())
            ASSERT_EQ(read(file), read(path(QDir(out()).relativeFilePath(file))));
        m_archive.UnzipFileToMemory();
        ASSERT_TRUE(m_archive.UnzipCloseFile());
    }
    m_archive.UnzipOpenFile(path("a.zip"), u"schl\u00fcssel"_qs);
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
}

INSTANTIATE_TEST_SUITE_P(
    Plain, PackedByTool,
    ::testing::Values(
        Packer{"zip", "zip -qr a.zip pkg"}, Packer{"zip_without_folders", "zip -qrD a.zip pkg"},
        Packer{"zip_stored", "zip -qr0 a.zip pkg"}, Packer{"sevenzip", "7z a -bd a.zip pkg"},
        Packer{"sevenzip_stored", "7z a -bd -mx=0 a.zip pkg"},
        Packer{"bsdtar", "bsdtar -a -cf a.zip pkg"},
        Packer{"bsdtar_stored", "bsdtar -a -cf a.zip --options=zip:compression=store pkg"},
        Packer{"python", "/usr/bin/python3 -m zipfile -c a.zip pkg"}),
    nameOf<Packer>);

const auto kEncrypted = ::testing::Values(
    Packer{"zip", "zip -qr -P secret a.zip pkg", "secret"},
    Packer{"zip_stored", "zip -qr0 -P secret a.zip pkg", "secret"},
    Packer{"sevenzip", "7z a -bd -psecret -mem=ZipCrypto a.zip pkg", "secret"},
    Packer{"bsdtar",
           "bsdtar -a -cf a.zip --options=zip:encryption=zipcrypt --passphrase=secret pkg",
           "secret"});
INSTANTIATE_TEST_SUITE_P(Encrypted, PackedByTool, kEncrypted, nameOf<Packer>);
INSTANTIATE_TEST_SUITE_P(Encrypted, EncryptedByTool, kEncrypted, nameOf<Packer>);

using Extraction = MadeArchiveTest;

struct NamesCase
{
    const char *name;
    const char *listed;
    const char *unpacked;
};

class ArchiveNames : public MadeArchiveTest, public ::testing::WithParamInterface<NamesCase>
{
};

TEST_P(ArchiveNames, SurviveIntoListMemoryAndFolder)
{
    const QStringList listed = QString::fromUtf8(GetParam().listed).split(u' ');
    ASSERT_TRUE(open(GetParam().name));
    EXPECT_EQ(m_archive.getZipFileContents(), listed);
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(tree(out()).keys().join(u' '), QString::fromUtf8(GetParam().unpacked));
    for (const QString &name : m_archive.UnzipFileToMemory().keys())
        EXPECT_TRUE(listed.contains(name));
    EXPECT_EQ(m_listener->errors, QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ArchiveNames,
    ::testing::Values(
        NamesCase{"backslash", "top/sub/ top/sub/file.bin other/deep/file.bin",
                  "other/ other/deep/ other/deep/file.bin top/ top/sub/ top/sub/file.bin"},
        NamesCase{"gbk", "\u56fa\u4ef6/\u7e17 \u7e17.bin",
                  "\u56fa\u4ef6/ \u56fa\u4ef6/\u7e17 \u7e17.bin"},
        NamesCase{"utf8", "\u56fa\u4ef6.bin \u56fa.bin", "\u56fa.bin \u56fa\u4ef6.bin"},
        NamesCase{"bytes", "\u00ff\u00fe\u0080.bin", "\u00ff\u00fe\u0080.bin"},
        NamesCase{"dots", "./a//b/./c.bin a/x/../d.bin", "a/ a/b/ a/b/c.bin a/d.bin"},
        NamesCase{"prefixed", "first.bin last.bin", "first.bin last.bin"}),
    nameOf<NamesCase>);

TEST_F(Extraction, ReadsNamesInTheEncodingThatIsSet)
{
    ASSERT_TRUE(open("gbk"));
    m_archive.setStringEncoding("ISO-8859-1");
    EXPECT_EQ(m_archive.getZipFileContents().last(), u"\u00bf\\.bin"_qs.replace('\\', '/'));
    m_archive.setStringEncoding("no such encoding");
    EXPECT_EQ(m_archive.getZipFileContents().last(), u"\u00bf/.bin"_qs);
}

TEST_F(Extraction, TellsItsProgressAndTheFilesWritten)
{
    QList<std::tuple<qint32, quint32, quint64>> told;
    m_archive.setProgressBlock([&](qint32 percent, quint32 index, quint64 total) {
        told.append({percent, index, total});
    });
    ASSERT_TRUE(open("three"));
    ASSERT_TRUE(m_archive.UnzipFileTo(out() + u'/', true));
    EXPECT_EQ(told, (decltype(told){{33, 1, 3}, {66, 2, 3}, {100, 3, 3}}));
    EXPECT_EQ(m_archive.unzippedFiles(),
              (QStringList{out() + "/a/one.bin", out() + "/a/b/empty.bin", out() + "/two.bin"}));
    EXPECT_TRUE(m_archive.UnzipCloseFile());
    EXPECT_EQ(m_archive.numFiles(), 3U);
    EXPECT_EQ(m_archive.unzippedFiles().size(), 3);
}

TEST_F(Extraction, WithoutADestinationUnpacksIntoTheCurrentFolder)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir().mkpath(out()) && QDir::setCurrent(out()));
    ASSERT_TRUE(open("three"));
    EXPECT_TRUE(m_archive.UnzipFileTo({}, true));
    EXPECT_EQ(m_archive.unzippedFiles().first(), u"a/one.bin");
    EXPECT_EQ(tree(out()).size(), 5);
    QDir::setCurrent(before);
}

TEST_F(Extraction, EndsCleanlyWhenACallbackClosesTheArchive)
{
    m_archive.setProgressBlock([this](qint32, quint32, quint64) { m_archive.UnzipCloseFile(); });
    ASSERT_TRUE(open("three"));
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_archive.unzippedFiles(), (QStringList{out() + "/a/one.bin"}));
}

TEST_F(Extraction, ReplacesAFileOnlyWhenToldOrAllowedTo)
{
    const QString file = out() + "/two.bin";
    ASSERT_TRUE(write(file, "old"));
    ASSERT_EQ(::chmod(qPrintable(file), 0755), 0);
    ASSERT_TRUE(open("three"));

    m_listener->answer = false;
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), false));
    EXPECT_EQ(m_listener->questions, (QStringList{file}));
    EXPECT_EQ(read(file), "old");
    EXPECT_EQ(m_archive.unzippedFiles().size(), 2);

    m_listener->answer = true;
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), false));
    EXPECT_EQ(m_listener->questions.size(), 4); // the two written before are there by now
    EXPECT_EQ(QFileInfo(file).size(), 204'800);

    ASSERT_TRUE(write(file, "old"));
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(m_listener->questions.size(), 4);
    ASSERT_TRUE(write(file, "old"));
    m_archive.setDelegate(nullptr);
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), false));
    EXPECT_EQ(QFileInfo(file).size(), 204'800);
    EXPECT_TRUE(QFileInfo(file).isExecutable());
}

TEST_F(Extraction, LetsTheLastOfTwoEntriesWithOneNameWin)
{
    ASSERT_TRUE(open("twice"));
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(tree(out()), (Tree{{"twice.bin", "new"}}));
    EXPECT_EQ(m_archive.UnzipFileToMemory(), (QHash<QString, QByteArray>{{"twice.bin", "new"}}));
}

TEST_F(Extraction, GoesOnPastNamesTakenByAnotherKind)
{
    ASSERT_TRUE(write(out() + "/taken/inside.bin", "kept"));
    ASSERT_TRUE(write(out() + "/file", "kept"));
    ASSERT_TRUE(open("kinds"));
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    const QString text = "Failed to open output file for writing";
    EXPECT_EQ(m_listener->errors, (QStringList{text, text}));
    EXPECT_EQ(QStringList(tree(out()).keys()),
              (QStringList{"file", "last.bin", "taken/", "taken/inside.bin"}));
    EXPECT_EQ(m_archive.unzippedFiles(), (QStringList{out() + "/last.bin"}));
}

TEST_F(Extraction, FailsInEveryWayOnAClosedArchive)
{
    EXPECT_TRUE(m_archive.UnzipCloseFile());
    EXPECT_FALSE(m_archive.UnzipOpenFile(path("missing.zip")));
    EXPECT_FALSE(m_archive.UnzipOpenFile(m_folder.path()));
    EXPECT_FALSE(m_archive.UnzipFileTo(out(), true));
    EXPECT_TRUE(m_archive.UnzipFileToMemory().isEmpty());
    EXPECT_TRUE(m_archive.getZipFileContents().isEmpty());
    EXPECT_EQ(m_listener->errors, (QStringList{"Failed", "Error occurs", "Failed", "Error occurs",
                                               "Failed", "Error occured"}));
    EXPECT_FALSE(QFileInfo::exists(out()));
}

TEST_F(Extraction, ListsUpToTheFirstEntryThatDoesNotOpen)
{
    ASSERT_TRUE(open("bzip2"));
    EXPECT_EQ(m_archive.getZipFileContents(), (QStringList{"first.bin"}));
    EXPECT_EQ(m_listener->errors, (QStringList{"Error occured"}));
}

} // namespace
