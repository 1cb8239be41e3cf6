#include "update/Frames.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

TEST(Frames, HaveTheirBytes)
{
    EXPECT_EQ(CmdConnect().toHex(), "0301fefc");
    EXPECT_EQ(CmdQueryVersion().toHex(), "0302fdfc");
    EXPECT_EQ(CmdDownload().toHex(), "0303fcfc");
    EXPECT_EQ(DownloadHeader(0x00012345).toHex(), "0908001800000123457e");
    EXPECT_EQ(DownloadHeader(0x7FFFFFFF).toHex(), "09080018007fffffff99");
    EXPECT_EQ(DataFrame(QByteArray(250, '\0')).toHex(), "fb" + QByteArray(500, '0') + "fb");
    EXPECT_EQ(LastDataFrame({}).toHex(), "0101");
    EXPECT_EQ(LastDataFrame("\xa5\x5a").toHex(), "03a55afc");
    EXPECT_EQ(dataChecksumappendLen("\x03\x01\xfe\xff", 3), 0xFC) << "of the first bytes only";
}

} // namespace
} // namespace vorn
