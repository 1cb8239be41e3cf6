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
    EXPECT_FALSE(checkFirmwareImage(file(kLongest)));
    using Kind = UpdateFailureKind;
    for (const auto &[path, kind, code] :
         {std::tuple(QString(), Kind::NoImageChosen, 0),
          {file(0), Kind::ImageEmpty, 0},
          {file(kLongest + 1), Kind::ImageTooLong, 0},
          {folder.filePath("none.bin"), Kind::ImageUnreadable, ENOENT},
          {folder.path(), Kind::ImageUnreadable, EISDIR},
          {file(1) + "/below", Kind::ImageUnreadable, ENOTDIR},
          {pipe, Kind::ImageUnreadable, EINVAL}}) {
        SCOPED_TRACE(testing::Message() << qPrintable(path) << ": " << static_cast<int>(kind));
        for (const UpdateFailure &failure :
             {readFirmwareImage(path).failure, checkFirmwareImage(path)}) {
            EXPECT_EQ(failure.kind, kind);
            EXPECT_EQ(failure.code, code);
            EXPECT_EQ(failure.text, path);
        }
    }
}

} // namespace
} // namespace vorn
