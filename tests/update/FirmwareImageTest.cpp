#include "update/FirmwareImage.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>

namespace vorn {
namespace {

using Kind = ImageError::Kind;

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
    struct Case
    {
        QString path;
        Kind kind;
        int code = 0;
    };
    for (const Case &c : {Case{file(0), Kind::Empty}, Case{file(kLongest + 1), Kind::TooLong},
                          Case{folder.filePath("none.bin"), Kind::Unreadable, ENOENT},
                          Case{folder.path(), Kind::Unreadable, EISDIR},
                          Case{file(1) + "/below", Kind::Unreadable, ENOTDIR},
                          Case{pipe, Kind::Unreadable, EINVAL}}) {
        const auto image = readFirmwareImage(c.path);
        ASSERT_TRUE(std::holds_alternative<ImageError>(image)) << qPrintable(c.path);
        const ImageError &error = std::get<ImageError>(image);
        EXPECT_EQ(error.kind, c.kind);
        if (c.kind == Kind::Unreadable) {
            EXPECT_EQ(error.code, c.code);
            EXPECT_TRUE(error.description().contains(c.path)) << qPrintable(error.description());
        }
        EXPECT_TRUE(std::holds_alternative<ImageError>(checkFirmwareImage(c.path)));
    }
}

} // namespace
} // namespace vorn
