#include "tests/ziparchive/ArchiveFixture.h"

#include <QDateTime>

#include <sys/stat.h>
#include <utime.h>

#include <tuple>

namespace {

using Extraction = ArchiveTest;

// What other tools pack, with names that are no valid GBK: zip stores those as UTF-8 without saying
// so.
TEST_F(Extraction, UnpacksTheArchivesOfOtherToolsAndNothingWithoutTheRightPassword)
{
    constexpr time_t kDate = 1'690'000'000; // in summer time
    QByteArray large;
    for (qint64 i = 0; i < 60'000; ++i)
        large += QByteArray::number(i * i % 9973);
    const Tree contents = {{"VORN-1.bin", large},
                           {"a/b/deep.bin", "deep"},
                           {"a/empty.bin", ""},
                           {u"\u56fa.bin"_qs, QByteArray(5000, '\xff')}};
    writeTree(path("pkg"), contents);
    const utimbuf date = {.actime = 0, .modtime = kDate};
    ASSERT_EQ(utime(qPrintable(path("pkg/VORN-1.bin")), &date), 0);
    // One wrong password in 256 passes the check byte, and must fail by the decrypted data.
    QStringList wrongPasswords = {QString(), u"schl\u00fcssel"_qs};
    while (wrongPasswords.size() < 600)
        wrongPasswords.append(QString("wrong%1").arg(wrongPasswords.size()));

    for (const char *command :
         {"zip -qr a.zip pkg", "zip -qrD a.zip pkg", "zip -qr0 a.zip pkg", "7z a -bd a.zip pkg",
          "bsdtar -a -cf a.zip pkg", "/usr/bin/python3 -m zipfile -c a.zip pkg",
          "zip -qr -P secret a.zip pkg", "zip -qr0 -P secret a.zip pkg",
          "7z a -bd -psecret -mem=ZipCrypto a.zip pkg",
          "bsdtar -a -cf a.zip --options=zip:encryption=zipcrypt --passphrase=secret pkg"}) {
        SCOPED_TRACE(command);
        QFile::remove(path("a.zip"));
        const QStringList words = QString(command).split(u' ');
        run(words.first(), words.mid(1));
        const bool isEncrypted = QByteArray(command).contains("secret");
        m_listener->errors.clear();
        writeTree(out(), {});
        ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), isEncrypted ? "secret" : ""));
        ASSERT_TRUE(m_archive.UnzipFileTo(out(), true));
        EXPECT_EQ(treeAt(out() + "/pkg"), contents);
        // 7z converts dates by today's offset from UTC, which may be another than on that day.
        const auto seconds = QFileInfo(out() + "/pkg/VORN-1.bin").lastModified().toSecsSinceEpoch();
        EXPECT_TRUE(seconds == kDate || words.first() == "7z") << seconds;
        EXPECT_EQ(m_archive.unzippedFiles().size(), 4);
        const auto inMemory = m_archive.UnzipFileToMemory();
        EXPECT_EQ(inMemory.size(), 3); // all but the empty one
        EXPECT_EQ(inMemory.value("pkg/VORN-1.bin"), large);
        EXPECT_EQ(static_cast<quint64>(m_archive.getZipFileContents().size()),
                  m_archive.numFiles());
        EXPECT_EQ(m_listener->errors, QStringList());
        EXPECT_TRUE(m_archive.UnzipCloseFile());
        EXPECT_TRUE(m_archive.password().isEmpty());

        qsizetype refused = 0;
        for (const QString &password : isEncrypted ? wrongPasswords : QStringList()) {
            m_listener->errors.clear();
            ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), password));
            ASSERT_FALSE(m_archive.UnzipFileTo(out(), true));
            ASSERT_EQ(m_listener->errors.size(), 1);
            ASSERT_EQ(treeAt(out() + "/pkg"), contents);
            refused += m_listener->errors.count("Error occurs");
        }
        EXPECT_TRUE(!isEncrypted || refused > 550) << refused;
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
    ASSERT_TRUE(open("gbk"));
    m_archive.setStringEncoding("ISO-8859-1");
    EXPECT_EQ(m_archive.getZipFileContents().value(1), u"\u00bf/.bin"_qs);
}

TEST_F(Extraction, ReportsItsProgressAndTheFilesWritten)
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
}

TEST_F(Extraction, StopsWhenACallbackClosesTheArchiveAndUnpacksToTheCurrentFolder)
{
    const QString before = QDir::currentPath();
    m_archive.setProgressBlock([this](qint32, quint32, quint64) { m_archive.UnzipCloseFile(); });
    ASSERT_TRUE(open("three") && QDir::setCurrent(m_folder.path()));
    EXPECT_FALSE(m_archive.UnzipFileTo({}, true));
    QDir::setCurrent(before);
    EXPECT_EQ(m_archive.unzippedFiles(), QStringList{"a/one.bin"});
    EXPECT_EQ(treeAt(m_folder.path()), (Tree{{"a/one.bin", "1"}}));
}

TEST_F(Extraction, ReplacesAFileOnlyWithPermission)
{
    const QString file = out() + "/two.bin";
    struct Case
    {
        bool overWrites;
        bool hasDelegate;
        bool answer;
        bool isReplaced;
    };
    for (const auto &[overWrites, hasDelegate, answer, isReplaced] :
         {Case{false, true, false, false},
          {false, true, true, true},
          {true, true, false, true},
          {false, false, false, true}}) {
        writeTree(out(), {{"two.bin", "old"}});
        ASSERT_EQ(::chmod(qPrintable(file), 0755), 0);
        m_listener->answer = answer;
        m_listener->questions.clear();
        m_archive.setDelegate(hasDelegate ? m_listener : nullptr);
        ASSERT_TRUE(open("three"));
        EXPECT_TRUE(m_archive.UnzipFileTo(out(), overWrites));
        const bool isAsked = hasDelegate && !overWrites;
        EXPECT_EQ(m_listener->questions, isAsked ? QStringList(file) : QStringList());
        EXPECT_EQ(QFileInfo(file).size(), isReplaced ? 204'800 : 3);
        EXPECT_EQ(m_archive.unzippedFiles().size(), isReplaced ? 3 : 2);
        EXPECT_TRUE(QFileInfo(file).isExecutable());
    }
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

TEST_F(Extraction, FailsWithoutAnOpenArchive)
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

    EXPECT_FALSE(m_archive.UnzipOpenFile(path("missing.zip")));
    m_archive.getZipFileContents();
    EXPECT_EQ(m_archive.firstFailure().kind, vorn::ArchiveFailureKind::NotRead);
    EXPECT_EQ(m_archive.firstFailure().code, ENOENT);
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
