#include "platform/PrivateFile.h"

#include "tests/ziparchive/Tree.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace vorn {
namespace {

TEST(PrivateFileTest, ReplacesFilesAndLinksForItsOwnerAloneOrNothing)
{
    const mode_t umask = ::umask(0);
    const QTemporaryDir folder;
    const auto at = [&](const char *name) { return folder.filePath(name); };
    writeTree(folder.path(),
              {{"old", "old"}, {"target", "kept"}, {"link@", "target"}, {"folder/x", {}}});
    for (const char *name : {"new", "old", "link"}) {
        EXPECT_TRUE(writePrivateFile(at(name), "content").isNull()) << name;
        struct stat status = {};
        EXPECT_EQ(::lstat(qPrintable(at(name)), &status), 0);
        EXPECT_EQ(status.st_mode, mode_t{S_IFREG | 0600}) << name;
    }
    const Tree tree{{"new", "content"},
                    {"old", "content"},
                    {"link", "content"},
                    {"target", "kept"},
                    {"folder/x", {}}};
    for (const char *name : {"folder", "none/new"}) {
        const QString problem = writePrivateFile(at(name), "content");
        EXPECT_FALSE(problem.isEmpty()) << name;
    }
    EXPECT_EQ(treeAt(folder.path()), tree);
    ::umask(umask);
}

} // namespace
} // namespace vorn
