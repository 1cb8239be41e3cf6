#pragma once

#include "tests/support/QtPrinting.h"
#include "ziparchive/ZipArchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

#include <gtest/gtest.h>

using Tree = QMap<QString, QByteArray>;

// A parameterised test is called by its parameter's name.
template <typename Parameter>
std::string nameOf(const ::testing::TestParamInfo<Parameter> &test)
{
    return QString(test.param.name).replace(u'-', u'_').toStdString();
}

// What a ZipArchive said and asked.
struct Listener : ZipArchiveDelegate
{
    void ErrorMessage(const QString &msg) override { errors.append(msg); }
    bool OverWriteOperation(const QString &file) override
    {
        questions.append(file);
        return answer;
    }

    QStringList errors;
    QStringList questions;
    bool answer = true;
};

// A folder of its own for each test, with "out" in it to unpack into.
class ArchiveTest : public ::testing::Test
{
protected:
    ArchiveTest() { m_archive.setDelegate(m_listener); }

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString out() const { return path("out"); }

    static bool write(const QString &file, const QByteArray &bytes)
    {
        QFile target(file);
        return QDir().mkpath(QFileInfo(file).path()) && target.open(QIODevice::WriteOnly) &&
               target.write(bytes) == bytes.size();
    }

    static QByteArray read(const QString &file)
    {
        QFile source(file);
        return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray("(unreadable)");
    }

    // Every file below `folder` (hidden ones too) with its bytes; folders end in "/".
    static Tree tree(const QString &folder)
    {
        Tree found;
        QDirIterator it(folder,
                        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QFileInfo item(it.next());
            const QString name = QDir(folder).relativeFilePath(it.filePath());
            if (item.isSymLink() || !item.exists())
                found.insert(name, "link");
            else if (item.isDir())
                found.insert(name + u'/', {});
            else
                found.insert(name, item.isFile() ? read(it.filePath()) : "special");
        }
        return found;
    }

    // Runs a tool in the test's folder; its output when it succeeds. A tool that is missing or
    // fails fails the test.
    QByteArray run(const QString &tool, const QStringList &arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(m_folder.path());
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(tool, arguments);
        EXPECT_TRUE(process.waitForFinished(60'000)) << qPrintable(tool);
        const QByteArray output = process.readAll();
        EXPECT_EQ(process.exitCode(), 0) << qPrintable(tool + u' ' + arguments.join(u' ')) << "\n"
                                         << output.constData();
        return output;
    }

    QTemporaryDir m_folder;
    std::shared_ptr<Listener> m_listener = std::make_shared<Listener>();
    ZipArchive m_archive;
};

// With the archives of make_archives.py.
class MadeArchiveTest : public ArchiveTest
{
protected:
    static void SetUpTestSuite()
    {
        s_shared = std::make_unique<QTemporaryDir>();
        ASSERT_TRUE(QDir(s_shared->path()).mkpath("made"));
        // Where the entry with an absolute path would go.
        ASSERT_TRUE(QDir(s_shared->path()).mkpath("outside"));
        ASSERT_EQ(QProcess::execute("/usr/bin/python3", {VORN_MAKE_ARCHIVES, made()}), 0);
    }
    static void TearDownTestSuite() { s_shared.reset(); }

    static QString made() { return s_shared->filePath("made"); }
    bool open(const QString &name)
    {
        return m_archive.UnzipOpenFile(made() + u'/' + name + ".zip");
    }

    inline static std::unique_ptr<QTemporaryDir> s_shared;
};
