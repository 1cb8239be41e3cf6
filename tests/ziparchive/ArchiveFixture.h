#pragma once

#include "tests/support/QtPrinting.h"
#include "tests/ziparchive/Tree.h"
#include "ziparchive/ZipArchive.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

// Records what a ZipArchive reports and asks.
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

// Each test has its own folder, with "out" in it to unpack into.
class ArchiveTest : public ::testing::Test
{
protected:
    ArchiveTest() { m_archive.setDelegate(m_listener); }

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString out() const { return path("out"); }

    // Runs a tool in the test's folder, which must succeed; returns its output.
    QByteArray run(const QString &tool, const QStringList &arguments) const
    {
        QProcess process;
        process.setWorkingDirectory(m_folder.path());
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(tool, arguments);
        EXPECT_TRUE(process.waitForFinished(60'000)) << qPrintable(tool);
        QByteArray output = process.readAll();
        EXPECT_EQ(process.exitCode(), 0) << qPrintable(arguments.join(u' ')) << output.constData();
        return output;
    }

    // The archives of make_archives.py, and beside them "outside", where an absolute path leads.
    static QString made()
    {
        static const QTemporaryDir folder;
        static const QString archives = folder.filePath("made");
        static const bool isMade =
            QDir().mkpath(archives) && QDir().mkpath(folder.filePath("outside")) &&
            QProcess::execute("/usr/bin/python3", {VORN_MAKE_ARCHIVES, archives}) == 0;
        EXPECT_TRUE(isMade);
        return archives;
    }

    bool open(const QString &name, const QString &password = {})
    {
        return m_archive.UnzipOpenFile(made() + u'/' + name + ".zip", password);
    }

    QTemporaryDir m_folder;
    std::shared_ptr<Listener> m_listener = std::make_shared<Listener>();
    ZipArchive m_archive;
};
