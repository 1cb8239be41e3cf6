#include "serial/LineSettings.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

struct Row
{
    LineSettings settings;
    tcflag_t among; // of the control flags, those that the row is about
    tcflag_t set;
};

constexpr tcflag_t kParity = PARENB | PARODD | CMSPAR;
constexpr tcflag_t kAlways = HUPCL | CLOCAL | CREAD;
constexpr Row kRows[] = {
    {{}, kAlways | CSIZE | PARENB | CMSPAR | CSTOPB | CRTSCTS, kAlways | CS8},
    {{.dataBits = 6}, CSIZE, CS5}, // deliberately not six
    {{.dataBits = 7}, CSIZE, CS7},
    {{.dataBits = 9}, CSIZE, CS5},
    {{.stopBits = 2}, CSTOPB, CSTOPB},
    {{.parity = 1}, kParity, PARENB | PARODD},
    {{.parity = 2}, kParity, PARENB},
    {{.echo = true, .rtsCts = true}, CRTSCTS, CRTSCTS},
};

TEST(LineSettings, YieldTheirFlagsWhateverWasSetBefore)
{
    for (const Row &row : kRows) {
        SCOPED_TRACE(&row - kRows);
        for (const tcflag_t before : {tcflag_t{0}, ~tcflag_t{0}}) {
            termios attributes{};
            attributes.c_iflag = attributes.c_oflag = attributes.c_cflag = attributes.c_lflag =
                before;
            attributes = withLineSettings(attributes, row.settings);
            EXPECT_EQ(attributes.c_cflag & row.among, row.set);
            EXPECT_EQ(attributes.c_lflag & (ECHO | ICANON | ISIG), row.settings.echo ? ECHO : 0U);
            EXPECT_EQ(attributes.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNCR | ISTRIP), 0U);
            EXPECT_EQ(attributes.c_oflag & OPOST, 0U);
            EXPECT_EQ(attributes.c_cc[VMIN], 1);
            EXPECT_EQ(attributes.c_cc[VTIME], 2);
        }
    }
}

} // namespace
} // namespace vorn
