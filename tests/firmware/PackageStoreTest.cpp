#include "firmware/PackageStore.h"

#include "firmware/ResponseHeaders.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "tests/ziparchive/Tree.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace vorn;
using Kind = PackageProblemKind;

namespace {

// "NAME=CONTENT" and "NAME/", with spaces between them.
Entries entriesOf(const char *text)
{
    Entries entries;
    for (const QByteArray &item : QByteArray(text).split(' ')) {
        const QByteArrayList halves = item.split('=');
        if (!item.isEmpty())
            entries.append({QString::fromUtf8(halves.first()), halves.value(1)});
    }
    return entries;
}

Tree treeOf(const char *text)
{
    Tree tree;
    for (const auto &[name, content] : entriesOf(text))
        tree[name] = content;
    return tree;
}

// What is in the caches directory, but for archives and markers.
Tree firmwareTree()
{
    Tree tree = treeAt(cachesDirectory());
    tree.removeIf([](const Tree::iterator &item) {
        return item.key().endsWith(".zip") || item.key().endsWith("/.published-by-vornupdater");
    });
    return tree;
}

PackageProblem store(const QString &filename, const QByteArray &data)
{
    PackageStore store(filename, folderNameFor(filename));
    if (PackageProblem problem = store.save(data))
        return problem;
    return store.install();
}

TEST(PackageStoreTest, APackageLandsWhereItsLayoutSays)
{
    struct Case
    {
        const char *what;
        const char *filename;
        const char *entries;
        const char *before;
        const char *after;
    };
    const char *const old = "VornUpdate2/old.bin=old";
    const Case cases[] = {
        {"own top folder", "VornUpdate2.zip",
         "VornUpdate2/ VornUpdate2/a.bin=A VornUpdate2/sub/b.bin=B", old,
         "VornUpdate2/a.bin=A VornUpdate2/sub/b.bin=B"},
        {"an entry for the top folder, but last", "VornUpdate2.zip",
         "VornUpdate2/a.bin=A VornUpdate2/", old, "VornUpdate2/a.bin=A"},
        {"loose files", "VornUpdate2.zip", "a.bin=A sub/b.bin=B", old,
         "VornUpdate2/a.bin=A VornUpdate2/sub/b.bin=B"},
        {"top folder without an entry of its own", "VornUpdate2.zip", "VornUpdate2/a.bin=A", old,
         "VornUpdate2/VornUpdate2/a.bin=A"},
        {"another name with its top folder", "other.zip", "other/ other/a.bin=A",
         "VornUpdate2/old.bin=old other/gone.bin=gone other/.published-by-vornupdater=",
         "VornUpdate2/old.bin=old other/a.bin=A"},
        {"another name with loose files", "other.zip", "a.bin=A same.bin=new sub/same.bin=new",
         "VornUpdate2/old.bin=old VornUpdate2/same.bin=old VornUpdate2/sub/same.bin=old "
         "VornUpdate2/sub/old.bin=old VornUpdate2/old/deep/x=x VornUpdate2/link@=/nowhere "
         "other/gone.bin=gone other/.published-by-vornupdater=",
         "VornUpdate2/a.bin=A VornUpdate2/old.bin=old VornUpdate2/same.bin=new "
         "VornUpdate2/sub/same.bin=new VornUpdate2/sub/old.bin=old VornUpdate2/old/deep/x=x "
         "VornUpdate2/link@=/nowhere"},
        {"things beside the top folder", "VornUpdate2.zip",
         "readme.txt=new VornUpdate2/ VornUpdate2/a.bin=A docs/same.txt=new img/x.png=x",
         "VornUpdate2/old.bin=old readme.txt=old docs/same.txt=old",
         "VornUpdate2/a.bin=A readme.txt=old docs/same.txt=old"},
        {"the firmware folder is a link", "VornUpdate2.zip", "a.bin=A",
         "elsewhere/old.bin=old VornUpdate2@=elsewhere",
         "elsewhere/old.bin=old VornUpdate2/a.bin=A"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        writeTree(cachesDirectory(), treeOf(c.before));
        const QByteArray archive = makeArchive(entriesOf(c.entries));
        const PackageProblem problem = store(c.filename, archive);
        EXPECT_FALSE(problem) << qPrintable(problem.text);
        EXPECT_EQ(firmwareTree(), treeOf(c.after));
        EXPECT_EQ(treeAt(cachesDirectory()).value(c.filename), archive) << "the archive is kept";
    }
}

TEST(PackageStoreTest, AFailedPackageLeavesTheFirmwareAsItWas)
{
    const QByteArray good = makeArchive({{"VornUpdate2/", {}},
                                         {"VornUpdate2/a.bin", QByteArray(5000, 'A')},
                                         {"VornUpdate2/b.bin", QByteArray(5000, 'B')}});
    QByteArray damaged = good;
    const qsizetype data = damaged.indexOf("b.bin") + 5;
    damaged[data + 4] = static_cast<char>(damaged[data + 4] ^ 0x55);
    struct Case
    {
        const char *what;
        QString filename;
        QByteArray archive;
        Kind problem;
        const char *before = "VornUpdate2/old.bin=old";
    };
    const QString usual = "VornUpdate2.zip";
    const auto made = [](const char *entries) { return makeArchive(entriesOf(entries)); };
    const Case cases[] = {
        {"empty body", usual, {}, Kind::NotAnArchive},
        {"damaged entry", usual, damaged, Kind::BadEntry},
        {"leads outside", usual, made("VornUpdate2/ ../evil.bin=evil"), Kind::EntryOutside},
        {"a file in the firmware folder's place", usual, good, Kind::Conflict, "VornUpdate2=file"},
        {"a folder in the archive's place", "VornUpdate2", good, Kind::FileSystem},
        {"a folder where the package has a file", "other.zip", made("x=file"), Kind::Conflict,
         "VornUpdate2/x/old.bin=old"},
        {"a link where the package has a folder", "other.zip", made("x/a.bin=A"), Kind::Conflict,
         "VornUpdate2/x@=../elsewhere elsewhere/y=y"},
        {"a folder of another program in its folder's place", "mozilla.zip",
         made("mozilla/ mozilla/a.bin=A"), Kind::Conflict, "mozilla/profile=theirs"},
        {"a folder of another program, and loose files", "mozilla.zip",
         made("a.bin=A .published-by-vornupdater="), Kind::Conflict, "mozilla/profile=theirs"},
        {"a file and a folder of one name", usual,
         made("VornUpdate2/ VornUpdate2/x/a.bin=A VornUpdate2/x=file"), Kind::EntryNameTaken},
        {"an entry named after the folder itself", usual,
         made("VornUpdate2/ VornUpdate2/.=A VornUpdate2/a.bin=A"), Kind::EntryNameTaken},
        {"a name longer than names may be", QString(300, u'x'), good, Kind::FileSystem},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        writeTree(cachesDirectory(), treeOf(c.before));
        const Tree before = firmwareTree();
        const PackageProblem problem = store(c.filename, c.archive);
        EXPECT_EQ(problem.kind, c.problem) << qPrintable(problem.text);
        EXPECT_EQ(firmwareTree(), before);
    }
}

TEST(PackageStoreTest, TheArchiveReplacesAnythingButAFolder)
{
    const QByteArray archive = makeArchive({{"a.bin", "A"}});
    writeTree(cachesDirectory(), treeOf("target=untouched linked.zip@=target readonly.zip=old"));
    QFile::setPermissions(cachesDirectory() + "/readonly.zip", QFile::ReadOwner);
    for (const char *name : {"linked.zip", "readonly.zip"}) {
        EXPECT_FALSE(store(name, archive));
        EXPECT_EQ(treeAt(cachesDirectory()).value(name), archive);
    }
    EXPECT_EQ(treeAt(cachesDirectory()).value("target"), "untouched");
}

TEST(PackageStoreTest, PackagesSavedUnderOneNameAreEachInstalledAsTheyCame)
{
    writeTree(cachesDirectory(), {});
    PackageStore first("VornUpdate2.zip", "VornUpdate2");
    PackageStore second("VornUpdate2.zip", "VornUpdate2");
    ASSERT_FALSE(first.save(makeArchive({{"first.bin", "1"}})));
    ASSERT_FALSE(second.save("no archive"));
    StagingFolder::recoverInterruptedPublish(); // another instance starts: both are in use
    EXPECT_FALSE(first.install());
    EXPECT_TRUE(second.install());
    EXPECT_EQ(firmwareTree(), (Tree{{"VornUpdate2/first.bin", "1"}}));
}

} // namespace
