#include "update/FirmwareImage.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace vorn {
namespace {

TEST(FirmwareImage, WhatIsNoReadableFileOfAnAnnounceableLengthIsAnErrorWithItsCause)
{
    const QTemporaryDir folder;
    const auto file = [&](qint64 length) { // all zero and without place on the disk
        QFile made(folder.filePath(QString("%1.bin").arg(length)));
        EXPECT_TRUE(made.open(QIODevice::WriteOnly) && made.resize(length));
        return made.fileName();
    };
    const QString pipe = folder.filePath("pipe.bin");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    constexpr qint64 kLongest = 0x7FFFFFFF;
    EXPECT_FALSE(std::holds_alternative<ImageError>(checkFirmwareImage(file(kLongest))));
    for (const auto &[path, cause] : {std::pair(file(0), " is empty"),
                                      {file(kLongest + 1), " is too large for a device"},
                                      {folder.filePath("none.bin"), ": No such file or directory"},
                                      {folder.path(), ": Is a directory"},
                                      {file(1) + "/below", ": Not a directory"},
                                      {pipe, ": Invalid argument"}}) {
        SCOPED_TRACE(cause);
        const auto image = readFirmwareImage(path);
        ASSERT_TRUE(std::holds_alternative<ImageError>(image));
        const QString description = std::get<ImageError>(image).description();
        EXPECT_TRUE(description.contains(path) && description.endsWith(cause))
            << qPrintable(description);
        EXPECT_TRUE(std::holds_alternative<ImageError>(checkFirmwareImage(path)));
    }
}

} // namespace
} // namespace vorn
