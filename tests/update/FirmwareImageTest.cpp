#include "update/FirmwareImage.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cerrno>

namespace vorn {
namespace {

using Kind = ImageError::Kind;

class FirmwareImageTest : public testing::Test
{
protected:
    // A file of that many bytes, all zero and without place on the disk.
    QString file(qint64 length) const
    {
        const QString path = folder.filePath(QStringLiteral("%1.bin").arg(length));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.resize(length));
        return path;
    }

    const QTemporaryDir folder;
};

TEST_F(FirmwareImageTest, IsTheWholeFile)
{
    for (const qint64 length : {1, 65'536}) {
        const auto image = readFirmwareImage(file(length));
        ASSERT_TRUE(std::holds_alternative<QByteArray>(image));
        EXPECT_EQ(std::get<QByteArray>(image), QByteArray(length, '\0'));
        EXPECT_FALSE(std::holds_alternative<ImageError>(checkFirmwareImage(file(length))));
    }
}

TEST_F(FirmwareImageTest, LengthsThatTheProtocolCannotAnnounceAreErrors)
{
    constexpr qint64 kLongest = 0x7FFFFFFF;
    EXPECT_FALSE(std::holds_alternative<ImageError>(checkFirmwareImage(file(kLongest))));
    for (const auto &[length, kind] :
         {std::pair(qint64{0}, Kind::Empty), {kLongest + 1, Kind::TooLong}}) {
        const auto image = readFirmwareImage(file(length));
        ASSERT_TRUE(std::holds_alternative<ImageError>(image));
        EXPECT_EQ(std::get<ImageError>(image).kind, kind);
        EXPECT_TRUE(std::holds_alternative<ImageError>(checkFirmwareImage(file(length))));
    }
}

TEST_F(FirmwareImageTest, WhatIsNoReadableFileIsAnErrorWithItsCause)
{
    const QString pipe = folder.filePath(QStringLiteral("pipe.bin"));
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const auto &[path, code] : {std::pair(folder.filePath(QStringLiteral("none.bin")), ENOENT),
                                     {folder.path(), EISDIR},
                                     {file(1) + QStringLiteral("/below.bin"), ENOTDIR},
                                     {pipe, EINVAL}}) {
        const auto image = readFirmwareImage(path);
        ASSERT_TRUE(std::holds_alternative<ImageError>(image)) << qPrintable(path);
        const ImageError &error = std::get<ImageError>(image);
        EXPECT_EQ(error.kind, Kind::Unreadable);
        EXPECT_EQ(error.code, code);
        EXPECT_TRUE(error.description().contains(path)) << qPrintable(error.description());
        EXPECT_TRUE(std::holds_alternative<ImageError>(checkFirmwareImage(path)));
    }
}

} // namespace
} // namespace vorn
