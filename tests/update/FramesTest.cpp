#include "update/Frames.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

TEST(Frames, ChecksumIsTheXorOfTheFirstBytes)
{
    EXPECT_EQ(dataChecksumappendLen(hex("0301feff"), 3), 0xFC);
    EXPECT_EQ(dataChecksumappendLen(hex("01"), 1), 0x01);
    EXPECT_EQ(dataChecksumappendLen({}, 0), 0x00);
}

TEST(Frames, CommandsAndHeaderHaveTheirBytes)
{
    EXPECT_EQ(CmdConnect(), hex("0301fefc"));
    EXPECT_EQ(CmdQueryVersion(), hex("0302fdfc"));
    EXPECT_EQ(CmdDownload(), hex("0303fcfc"));
    EXPECT_EQ(DownloadHeader(0x00012345), hex("0908001800000123457e"));
    EXPECT_EQ(DownloadHeader(0x7FFFFFFF), hex("09080018007fffffff99"));
}

TEST(Frames, DataIsCountedAndFollowedByItsChecksum)
{
    EXPECT_EQ(DataFrame(QByteArray(250, '\0')), hex("fb") + QByteArray(250, '\0') + hex("fb"));
    EXPECT_EQ(LastDataFrame({}), hex("0101"));
    EXPECT_EQ(LastDataFrame(hex("a55a")), hex("03a55afc"));
    EXPECT_EQ(LastDataFrame(QByteArray(249, '\1')), hex("fa") + QByteArray(249, '\1') + hex("fb"));
}

} // namespace
} // namespace vorn
