#include "tests/ziparchive/Tree.h"

#include "ziparchive/ZipArchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
                file.write(bytes) == bytes.size())
        << qPrintable(path);
}

Tree treeAt(const QString &folder, const QString &except)
{
    Tree tree;
    const QDir base(folder);
    QDirIterator item(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (item.hasNext()) {
        const QFileInfo info = item.nextFileInfo();
        const QString name = base.relativeFilePath(info.filePath());
        if (info.isSymLink())
            tree[name + u'@'] = QFile::encodeName(info.symLinkTarget());
        else if (!info.isDir())
            tree[name] = info.isFile() ? readFile(info.filePath()) : "(special)";
        else if (QDir(info.filePath()).isEmpty())
            tree[name + u'/'] = {};
    }
    tree.remove(except);
    return tree;
}

void writeTree(const QString &folder, const Tree &tree)
{
    std::filesystem::remove_all(folder.toStdString());
    for (auto [name, content] : tree.asKeyValueRange()) {
        const QString path = folder + u'/' + name;
        if (!name.endsWith(u'@'))
            writeFile(path, content);
        else
            ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()) &&
                        QFile::link(QFile::decodeName(content), path.chopped(1)));
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
    return readFile(path);
}
