#include "tests/ziparchive/ArchiveFixture.h"

#include <QDateTime>

#include <sys/stat.h>
#include <utime.h>

#include <utility>

namespace {

class Creation : public ArchiveTest
{
protected:
    QByteArray dateInArchive() const
    {
        return run("/usr/bin/python3",
                   {"-c",
                    "import zipfile; print(*zipfile.ZipFile('a.zip').infolist()[0].date_time)"})
            .trimmed();
    }
};

TEST_F(Creation, IsReadByUnzipPythonAndItself)
{
    const Tree contents = {{"a/text.txt", QByteArray("text ").repeated(50'000)},
                           {"empty.bin", ""},
                           {u"\u56fa\u4ef6.bin"_qs, QByteArray(300'000, '\xff')},
                           {u"\U0001f600.bin"_qs, "not in GBK"}};
    for (const auto &[password, level] :
         {std::pair(QString(), -1), {{}, 0}, {"secret", -1}, {"se cret!", 9}}) {
        SCOPED_TRACE(testing::Message() << qPrintable(password) << level);
        m_archive.setCompression(level);
        bool appends = false;
        for (auto it = contents.begin(); it != contents.end(); ++it) {
            ASSERT_TRUE(m_archive.CreateZipFile2(path("a.zip"), password, appends));
            ASSERT_TRUE(m_archive.addDataToZip(it.value(), std::nullopt, it.key()));
            ASSERT_TRUE(m_archive.CloseZipFile2());
            appends = true;
        }
        EXPECT_TRUE(m_archive.password().isEmpty());
        EXPECT_EQ(QFileInfo(path("a.zip")).size() > 500'000, level == 0);

        run("unzip", {"-tqq", "-P", password, "a.zip"});
        run("/usr/bin/python3",
            {"-c",
             "import sys, zipfile\n"
             "archive = zipfile.ZipFile('a.zip')\n"
             "archive.setpassword(sys.argv[1].encode())\n"
             "assert archive.testzip() is None\n"
             "named = {info.orig_filename: info.flag_bits & 0x801 for info in archive.infolist()}\n"
             "gbk = '\\u56fa\\u4ef6.bin'.encode('gbk').decode('cp437')\n"
             "encrypted = 1 if sys.argv[1] else 0\n"
             "assert named == {'a/text.txt': encrypted, 'empty.bin': encrypted, gbk: encrypted,\n"
             "                 '\\U0001f600.bin': 0x800 | encrypted}, named",
             password});
        writeTree(out(), {});
        ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip"), password));
        EXPECT_TRUE(m_archive.UnzipFileTo(out(), true));
        EXPECT_EQ(treeAt(out()), contents);
    }
}

TEST_F(Creation, StoresDatesAMonthLateAndWithinTheRangeOfTheFormat)
{
    for (const auto &[given, stored] : {std::pair("2023-01-15T12:30:20", "2023 2 15 12 30 20"),
                                        {"2023-07-15T12:30:20", "2023 8 15 12 30 20"},
                                        {"1970-06-01T08:00:00", "1980 2 1 0 0 0"},
                                        {"2150-01-01T00:00:00", "2107 13 31 23 59 58"},
                                        {"2023-12-10T01:02:04", "2023 13 10 1 2 4"}}) {
        const auto moment = QDateTime::fromString(given, Qt::ISODate).toSecsSinceEpoch();
        vorn::FileAttributes attributes;
        attributes.modificationDate = std::chrono::system_clock::from_time_t(moment);
        ASSERT_TRUE(m_archive.CreateZipFile2(path("a.zip")));
        ASSERT_TRUE(m_archive.addDataToZip("x", attributes, "x"));
        ASSERT_TRUE(m_archive.CloseZipFile2());
        EXPECT_EQ(dateInArchive(), stored);
    }
    ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip")));
    ASSERT_TRUE(m_archive.UnzipFileTo(out(), true));
    EXPECT_EQ(QFileInfo(out() + "/x").lastModified(), QDateTime(QDate(2024, 1, 10), QTime(1, 2, 4)))
        << "a thirteenth month is the next January";
}

TEST_F(Creation, AddsWhatALinkLeadsToWithItsDate)
{
    writeTree(m_folder.path(), {{"target.bin", "target"},
                                {"relative@", "target.bin"},
                                {"link@", path("relative").toUtf8()},
                                {"loop@", "loop"}});
    const utimbuf date = {0, QDateTime(QDate(2020, 3, 4), QTime(5, 6, 8)).toSecsSinceEpoch()};
    ASSERT_EQ(::utime(qPrintable(path("target.bin")), &date), 0);
    ASSERT_EQ(::mkfifo(qPrintable(path("pipe")), 0666), 0);

    ASSERT_TRUE(m_archive.CreateZipFile2(path("a.zip")));
    EXPECT_TRUE(m_archive.addFileToZip(path("link"), "entry.bin"));
    for (const char *none : {".", "missing", "loop", "pipe"})
        EXPECT_FALSE(m_archive.addFileToZip(path(none), none)) << none;
    ASSERT_TRUE(m_archive.CloseZipFile2());
    EXPECT_EQ(dateInArchive(), "2020 4 4 5 6 8");
    ASSERT_TRUE(m_archive.UnzipOpenFile(path("a.zip")));
    EXPECT_EQ(m_archive.UnzipFileToMemory(), (QHash<QString, QByteArray>{{"entry.bin", "target"}}));
}

TEST_F(Creation, RefusesWhatAnArchiveCannotHold)
{
    EXPECT_FALSE(m_archive.addDataToZip("x", std::nullopt, "x")); // none open
    EXPECT_FALSE(m_archive.CloseZipFile2());
    EXPECT_FALSE(m_archive.CreateZipFile2(path("missing/a.zip")));
    EXPECT_FALSE(m_archive.CreateZipFile2(path("a.zip"), true)); // nothing to append to
    ASSERT_TRUE(m_archive.CreateZipFile2(path("a.zip"), u"schl\u00fcssel"_qs));
    EXPECT_FALSE(m_archive.addDataToZip("x", std::nullopt, "x"));
    m_archive.setPassword({});
    EXPECT_FALSE(m_archive.addDataToZip(std::nullopt, std::nullopt, "x"));
    EXPECT_FALSE(m_archive.addDataToZip("x", std::nullopt, ""));
    EXPECT_FALSE(m_archive.addDataToZip("x", std::nullopt, QString(1, QChar(0))));
    EXPECT_FALSE(m_archive.addDataToZip("x", std::nullopt, QString(70'000, 'x')));
    m_archive.setCompression(10);
    EXPECT_FALSE(m_archive.addDataToZip("x", std::nullopt, "x"));
    m_archive.setCompression(1);
    EXPECT_TRUE(m_archive.addDataToZip(QByteArray(), std::nullopt, QString(200, 'x')));
    EXPECT_TRUE(m_archive.CloseZipFile2());
    run("unzip", {"-tqq", "a.zip"});
}

TEST_F(Creation, TheDestructorFinishesTheArchiveButNotOneAbandonedForIt)
{
    {
        ZipArchive archive;
        for (const char *name : {"left.zip", "a.zip"}) {
            ASSERT_TRUE(archive.CreateZipFile2(path(name)));
            ASSERT_TRUE(archive.addDataToZip("x", std::nullopt, "x"));
        }
    }
    run("unzip", {"-tqq", "a.zip"});
    EXPECT_FALSE(m_archive.UnzipOpenFile(path("left.zip")));
}

} // namespace
