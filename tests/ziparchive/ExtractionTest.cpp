#include "tests/ziparchive/ArchiveFixture.h"

#include <QDateTime>

#include <sys/stat.h>
#include <utime.h>

#include <tuple>

namespace {

using Extraction = ArchiveTest;

// How a tool packs the folder "pkg" into "a.zip".
struct Packer
{
    const char *command;
    const char *password = "";
};

constexpr Packer kPackers[] = {
    {"zip -qr a.zip pkg"},
    {"zip -qrD a.zip pkg"}, // without entries for the folders
    {"zip -qr0 a.zip pkg"},
    {"7z a -bd a.zip pkg"},
    {"7z a -bd -mx=0 a.zip pkg"},
    {"bsdtar -a -cf a.zip pkg"},
    {"bsdtar -a -cf a.zip --options=zip:compression=store pkg"},
    {"/usr/bin/python3 -m zipfile -c a.zip pkg"},
    {"zip -qr -P secret a.zip pkg", "secret"},
    {"zip -qr0 -P secret a.zip pkg", "secret"},
    {"7z a -bd -psecret -mem=ZipCrypto a.zip pkg", "secret"},
    {"bsdtar -a -cf a.zip --options=zip:encryption=zipcrypt --passphrase=secret pkg", "secret"},
};

class ToolsArchive : public ArchiveTest
{
protected:
    void pack(const Packer &packer) const
    {
        writeTree(m_folder.path(), {});
        writeTree(path("pkg"), m_contents);
        const utimbuf date = {.actime = 0, .modtime = kDate};
        ASSERT_EQ(utime(qPrintable(path("pkg/VORN-1.bin")), &date), 0);
        const QStringList command = QString(packer.command).split(u' ');
        run(command.first(), command.mid(1));
    }

    static QByteArray large()
    {
        QByteArray bytes;
        for (qint64 i = 0; i < 60'000; ++i)
            bytes += QByteArray::number(i * i % 9973);
        return bytes;
    }

    static constexpr time_t kDate = 1'690'000'000; // in summer time
    const Tree m_contents = {{"VORN-1.bin", large()},
                             {"a/b/deep.bin", "deep"},
                             {"a/empty.bin", ""},
                             // In UTF-8 no valid GBK: zip writes it without saying which it is.
                             {u"\u56fa.bin"_qs, QByteArray(5000, '\xff')}};
};

TEST_F(ToolsArchive, UnpacksToTheSameFilesWithTheSameDates)
{
    for (const Packer &packer : kPackers) {
        SCOPED_TRACE(packer.command);
        pack(packer);
        ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), packer.password));
        ASSERT_TRUE(m_archive.UnzipFileTo(out(), true));
        EXPECT_EQ(treeAt(out() + "/pkg"), m_contents);
        // 7z converts dates by today's offset from UTC, which may be another than on that day.
        const bool isOffByAnHour = QString(packer.command).startsWith("7z");
        const auto date = QFileInfo(out() + "/pkg/VORN-1.bin").lastModified().toSecsSinceEpoch();
        EXPECT_TRUE(date == kDate || isOffByAnHour) << date;
        EXPECT_EQ(m_archive.unzippedFiles().size(), 4);
        EXPECT_EQ(m_listener->errors, QStringList());

        const auto inMemory = m_archive.UnzipFileToMemory();
        EXPECT_EQ(inMemory.size(), 3); // all but the empty one
        EXPECT_EQ(inMemory.value(u"pkg/\u56fa.bin"_qs), QByteArray(5000, '\xff'));
        EXPECT_EQ(m_archive.getZipFileContents().size(),
                  static_cast<qsizetype>(m_archive.numFiles()));
        EXPECT_TRUE(m_archive.UnzipCloseFile());
        EXPECT_TRUE(m_archive.password().isEmpty());
    }
}

TEST_F(ToolsArchive, LeavesNoWrongBytesWithoutTheRightPassword)
{
    // One wrong password in 256 passes the check byte, and must fail by what it makes of the data.
    QStringList passwords = {QString(), u"schl\u00fcssel"_qs};
    while (passwords.size() < 600)
        passwords.append(QString("wrong%1").arg(passwords.size()));
    for (const Packer &packer : kPackers) {
        if (*packer.password == '\0')
            continue;
        SCOPED_TRACE(packer.command);
        pack(packer);
        for (const QString &password : passwords) {
            m_listener->errors.clear();
            ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), password));
            ASSERT_FALSE(m_archive.UnzipFileTo(out(), true));
            ASSERT_EQ(m_listener->errors.size(), 1);
            for (const QString &file : m_archive.unzippedFiles())
                ASSERT_EQ(readFile(file),
                          m_contents.value(QDir(path("out/pkg")).relativeFilePath(file), "none"));
            ASSERT_TRUE(m_archive.UnzipCloseFile());
        }
    }
}

TEST_F(Extraction, NamesSurviveIntoListMemoryAndFolder)
{
    for (const auto &[archive, listed, unpacked] :
         {std::tuple("backslash", "top/sub/ top/sub/file.bin other/deep/file.bin",
                     "other/deep/file.bin top/sub/file.bin"),
          {"gbk", "\u56fa\u4ef6/\u7e17 \u7e17.bin", "\u56fa\u4ef6/\u7e17 \u7e17.bin"},
          {"utf8", "\u56fa\u4ef6.bin \u56fa.bin", "\u56fa.bin \u56fa\u4ef6.bin"},
          {"bytes", "\u00ff\u00fe\u0080.bin", "\u00ff\u00fe\u0080.bin"},
          {"twice", "twice.bin twice.bin", "twice.bin"},
          {"dots", "./a//b/./c.bin a/x/../d.bin", "a/b/c.bin a/d.bin"},
          {"prefixed", "first.bin last.bin", "first.bin last.bin"}}) {
        SCOPED_TRACE(archive);
        const QStringList names = QString(listed).split(u' ');
        writeTree(out(), {});
        ASSERT_TRUE(open(archive));
        EXPECT_EQ(m_archive.getZipFileContents(), names);
        EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
        EXPECT_EQ(treeAt(out()).keys().join(u' '), QString(unpacked));
        const auto inMemory = m_archive.UnzipFileToMemory();
        EXPECT_EQ(inMemory.size(), treeAt(out()).size());
        for (const QString &name : names)
            EXPECT_TRUE(name.endsWith('/') || inMemory.contains(name)) << qPrintable(name);
        // Of several entries with one name the last.
        EXPECT_EQ(inMemory.value("twice.bin", "new"), "new");
        EXPECT_TRUE(treeAt(out()).value("twice.bin", "new") == "new");
        EXPECT_EQ(m_listener->errors, QStringList());
    }
}

TEST_F(Extraction, ReadsNamesInTheEncodingThatIsSet)
{
    ASSERT_TRUE(open("gbk"));
    for (const char *encoding : {"ISO-8859-1", "no such encoding"}) {
        m_archive.setStringEncoding(encoding);
        EXPECT_EQ(m_archive.getZipFileContents().value(1), u"\u00bf/.bin"_qs);
    }
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

TEST_F(Extraction, EndsCleanlyInTheCurrentFolderWhenACallbackClosesTheArchive)
{
    const QString before = QDir::currentPath();
    m_archive.setProgressBlock([this](qint32, quint32, quint64) { m_archive.UnzipCloseFile(); });
    ASSERT_TRUE(open("three") && QDir::setCurrent(m_folder.path()));
    EXPECT_FALSE(m_archive.UnzipFileTo({}, true));
    QDir::setCurrent(before);
    EXPECT_EQ(m_archive.unzippedFiles(), QStringList{"a/one.bin"});
    EXPECT_EQ(treeAt(m_folder.path()), (Tree{{"a/one.bin", "1"}}));
}

TEST_F(Extraction, ReplacesAFileOnlyWhenToldOrAllowedTo)
{
    const QString file = out() + "/two.bin";
    writeFile(file, "old");
    ASSERT_EQ(::chmod(qPrintable(file), 0755), 0);
    ASSERT_TRUE(open("three"));

    m_listener->answer = false;
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), false));
    EXPECT_EQ(m_listener->questions, (QStringList{file}));
    EXPECT_EQ(readFile(file), "old");
    EXPECT_EQ(m_archive.unzippedFiles().size(), 2);

    m_listener->answer = true;
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), false));
    EXPECT_EQ(m_listener->questions.size(), 4); // the two written before are there by now
    EXPECT_EQ(QFileInfo(file).size(), 204'800);

    for (const bool isTold : {true, false}) {
        writeFile(file, "old");
        EXPECT_TRUE(m_archive.UnzipFileTo(out(), isTold));
        EXPECT_EQ(QFileInfo(file).size(), 204'800);
        EXPECT_EQ(m_listener->questions.size(), 4);
        m_archive.setDelegate(nullptr);
    }
    EXPECT_TRUE(QFileInfo(file).isExecutable());
}

TEST_F(Extraction, GoesOnPastNamesTakenByAnotherKind)
{
    const Tree before = {{"taken/inside.bin", "kept"}, {"file", "kept"}};
    writeTree(out(), before);
    ASSERT_TRUE(open("kinds"));
    EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
    const QString text = "Failed to open output file for writing";
    EXPECT_EQ(m_listener->errors, (QStringList{text, text}));
    EXPECT_EQ(m_archive.firstFailure().kind, vorn::ArchiveFailureKind::NameTaken);
    EXPECT_EQ(m_archive.firstFailure().text, "taken");
    Tree after = treeAt(out());
    EXPECT_EQ(after.remove("last.bin"), 1);
    EXPECT_EQ(after, before);
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

TEST_F(Extraction, ListsUpToTheFirstEntryThatDoesNotOpenAndNeedsNoPassword)
{
    for (const char *archive : {"encrypted", "strong-encryption"}) {
        ASSERT_TRUE(open(archive));
        EXPECT_EQ(m_archive.getZipFileContents().join(u' '), "first.bin evil.bin last.bin");
        EXPECT_EQ(m_listener->errors, QStringList());
    }

    ASSERT_TRUE(open("bzip2"));
    EXPECT_EQ(m_archive.getZipFileContents(), (QStringList{"first.bin"}));
    EXPECT_EQ(m_listener->errors, (QStringList{"Error occured"}));
}

} // namespace
