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

// "NAME=CONTENT", "NAME/" and "NAME@=TARGET", with spaces between them.
Entries entriesOf(const char *text)
{
    Entries entries;
    for (const QByteArray &item : QByteArray(text).split(' ')) {
        const QByteArrayList halves = item.split('=');
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

// The caches directory without archives and markers.
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
    const PackageProblem problem = store.save(data);
    return problem ? problem : store.install();
}

// A package either lands where its layout says, or changes nothing.
TEST(PackageStoreTest, InstallsPackagesOfEveryLayoutOrLeavesTheFirmwareAsItWas)
{
    struct Case
    {
        const char *filename;
        const char *entries;
        const char *before;
        const char *after = nullptr; // none: as before
        Kind problem = Kind::None;
    };
    const char *const usual = "VornUpdate2.zip";
    const char *const old = "VornUpdate2/old.bin=old";
    const Case cases[] = {
        // With its top folder, also behind its files.
        {usual, "VornUpdate2/ VornUpdate2/a.bin=A VornUpdate2/sub/b.bin=B", old,
         "VornUpdate2/a.bin=A VornUpdate2/sub/b.bin=B"},
        {usual, "VornUpdate2/a.bin=A VornUpdate2/", old, "VornUpdate2/a.bin=A"},
        // Loose files. A top folder without an entry of its own is none.
        {usual, "a.bin=A sub/b.bin=B", old, "VornUpdate2/a.bin=A VornUpdate2/sub/b.bin=B"},
        {usual, "VornUpdate2/a.bin=A", old, "VornUpdate2/VornUpdate2/a.bin=A"},
        // Of another name, with its top folder and with loose files.
        {"other.zip", "other/ other/a.bin=A",
         "VornUpdate2/old.bin=old other/gone.bin=gone other/.published-by-vornupdater=",
         "VornUpdate2/old.bin=old other/a.bin=A"},
        {"other.zip", "a.bin=A same.bin=new sub/same.bin=new",
         "VornUpdate2/old.bin=old VornUpdate2/same.bin=old VornUpdate2/sub/same.bin=old "
         "VornUpdate2/sub/old.bin=old VornUpdate2/old/deep/x=x VornUpdate2/link@=/nowhere "
         "other/gone.bin=gone other/.published-by-vornupdater=",
         "VornUpdate2/a.bin=A VornUpdate2/old.bin=old VornUpdate2/same.bin=new "
         "VornUpdate2/sub/same.bin=new VornUpdate2/sub/old.bin=old VornUpdate2/old/deep/x=x "
         "VornUpdate2/link@=/nowhere"},
        // What lies beside the top folder is dropped.
        {usual, "readme.txt=new VornUpdate2/ VornUpdate2/a.bin=A docs/same.txt=new img/x.png=x",
         "VornUpdate2/old.bin=old readme.txt=old docs/same.txt=old",
         "VornUpdate2/a.bin=A readme.txt=old docs/same.txt=old"},
        // A link in the firmware folder's place is replaced, a file is not.
        {usual, "a.bin=A", "elsewhere/old.bin=old VornUpdate2@=elsewhere",
         "elsewhere/old.bin=old VornUpdate2/a.bin=A"},
        {usual, "VornUpdate2/ VornUpdate2/a.bin=A", "VornUpdate2=file", {}, Kind::Conflict},
        // A folder in the archive's place.
        {"VornUpdate2", "a.bin=A", old, {}, Kind::FileSystem},
        // A folder where the package has a file, and a link where it has a folder.
        {"other.zip", "x=file", "VornUpdate2/x/old.bin=old", {}, Kind::Conflict},
        {"other.zip", "x/a.bin=A", "VornUpdate2/x@=../elsewhere elsewhere/y=y", {}, Kind::Conflict},
        // Another program's folder in the place of the package's, also if it has loose files.
        {"mozilla.zip", "mozilla/ mozilla/a.bin=A", "mozilla/profile=theirs", {}, Kind::Conflict},
        {"mozilla.zip",
         "a.bin=A .published-by-vornupdater=",
         "mozilla/profile=theirs",
         {},
         Kind::Conflict},
        // Entries that lead outside, and a file and a folder of one name.
        {usual, "VornUpdate2/ ../evil.bin=evil", old, {}, Kind::EntryOutside},
        {usual,
         "VornUpdate2/ VornUpdate2/x/a.bin=A VornUpdate2/x=file",
         old,
         {},
         Kind::EntryNameTaken},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(&c - cases);
        writeTree(cachesDirectory(), treeOf(c.before));
        const Tree expected = c.after ? treeOf(c.after) : firmwareTree();
        const QByteArray archive = makeArchive(entriesOf(c.entries));
        const PackageProblem problem = store(c.filename, archive);
        EXPECT_EQ(problem.kind, c.problem) << qPrintable(problem.text);
        EXPECT_EQ(firmwareTree(), expected);
        EXPECT_TRUE(problem || treeAt(cachesDirectory()).value(c.filename) == archive);
    }
}

TEST(PackageStoreTest, ADamagedArchiveLeavesTheFirmwareAsItWas)
{
    QByteArray damaged = makeArchive({{"a.bin", "A"}, {"b.bin", QByteArray(5000, 'B')}});
    const qsizetype data = damaged.indexOf("b.bin") + 9;
    damaged[data] = static_cast<char>(damaged.at(data) ^ 0x55);
    const Tree old = {{"VornUpdate2/old.bin", "old"}};
    writeTree(cachesDirectory(), old);
    EXPECT_EQ(store("VornUpdate2.zip", damaged).kind, Kind::BadEntry);
    EXPECT_EQ(store("VornUpdate2.zip", {}).kind, Kind::NotAnArchive);
    EXPECT_EQ(firmwareTree(), old);
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

TEST(PackageStoreTest, PackagesSavedUnderOneNameAreInstalledSeparately)
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
