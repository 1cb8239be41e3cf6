#include "tests/packages/Tree.h"

#include "ziparchive/ZipArchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

Tree treeAt(const QString &folder)
{
    Tree tree;
    const QDir base(folder);
    QDirIterator item(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (item.hasNext()) {
        const QFileInfo info = item.nextFileInfo();
        const QString name = base.relativeFilePath(info.filePath());
        QFile file(info.filePath());
        if (info.isSymLink())
            tree[name + u'@'] = QFile::encodeName(info.symLinkTarget());
        else if (!info.isDir() && file.open(QIODevice::ReadOnly))
            tree[name] = file.readAll();
        else if (info.isDir() && QDir(info.filePath()).isEmpty())
            tree[name + u'/'] = {};
    }
    return tree;
}

void writeTree(const QString &folder, const Tree &tree)
{
    for (auto [name, content] : tree.asKeyValueRange()) {
        const QString path = folder + u'/' + name;
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        if (name.endsWith(u'@')) {
            ASSERT_TRUE(QFile::link(QFile::decodeName(content), path.chopped(1)));
        } else if (!name.endsWith(u'/')) {
            QFile file(path);
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(content);
        }
    }
}

QByteArray makeArchive(const Entries &entries)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("made.zip");
    ZipArchive archive;
    EXPECT_TRUE(archive.CreateZipFile2(path));
    for (const auto &[name, content] : entries)
        EXPECT_TRUE(archive.addDataToZip(content, {}, name));
    EXPECT_TRUE(archive.CloseZipFile2());
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}
