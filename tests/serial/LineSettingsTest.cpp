#include "serial/LineSettings.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

struct Row
{
    const char *name;
    void (*change)(LineSettings &);
    tcflag_t among; // of the control flags, those that the row is about
    tcflag_t set;
};

constexpr tcflag_t kParity = PARENB | PARODD | CMSPAR;
constexpr tcflag_t kAlways = HUPCL | CLOCAL | CREAD;
constexpr Row kRows[] = {
    {"Defaults", [](LineSettings &) {}, kAlways | CSIZE | PARENB | CMSPAR | CSTOPB | CRTSCTS,
     kAlways | CS8},
    {"FiveDataBits", [](LineSettings &s) { s.dataBits = 5; }, CSIZE, CS5},
    {"SixDataBitsAreFive", [](LineSettings &s) { s.dataBits = 6; }, CSIZE, CS5},
    {"SevenDataBits", [](LineSettings &s) { s.dataBits = 7; }, CSIZE, CS7},
    {"NineDataBits", [](LineSettings &s) { s.dataBits = 9; }, CSIZE, CS5},
    {"OddParity", [](LineSettings &s) { s.parity = 1; }, kParity, PARENB | PARODD},
    {"EvenParity", [](LineSettings &s) { s.parity = 2; }, kParity, PARENB},
    {"NoStopBit", [](LineSettings &s) { s.stopBits = 0; }, CSTOPB, 0},
    {"TwoStopBits", [](LineSettings &s) { s.stopBits = 2; }, CSTOPB, CSTOPB},
    {"RtsCts", [](LineSettings &s) { s.rtsCts = true; }, CRTSCTS, CRTSCTS},
    {"DtrDsrIsNotToBeHad", [](LineSettings &s) { s.dtrDsr = true; }, CRTSCTS, 0},
    {"Echo", [](LineSettings &s) { s.echo = true; }, kAlways, kAlways},
};

// Also on a line on which everything was set before.
TEST(LineSettings, GiveTheirControlFlagsWhateverWasSetBefore)
{
    for (const Row &row : kRows) {
        SCOPED_TRACE(row.name);
        LineSettings settings;
        row.change(settings);
        for (const tcflag_t before : {tcflag_t{0}, ~tcflag_t{0}}) {
            termios attributes{};
            attributes.c_iflag = attributes.c_oflag = attributes.c_cflag = attributes.c_lflag =
                before;
            attributes = withLineSettings(attributes, settings);
            EXPECT_EQ(attributes.c_cflag & row.among, row.set);
            EXPECT_EQ(attributes.c_lflag & (ECHO | ICANON | ISIG), settings.echo ? ECHO : 0U);
            EXPECT_EQ(attributes.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNCR | ISTRIP), 0U);
            EXPECT_EQ(attributes.c_oflag & OPOST, 0U);
            EXPECT_EQ(attributes.c_cc[VMIN], 1);
            EXPECT_EQ(attributes.c_cc[VTIME], 2);
        }
    }
}

} // namespace
} // namespace vorn
