#include "serial/ORSSerialPacketDescriptor.h"

#include <gtest/gtest.h>

using Descriptor = ORSSerialPacketDescriptor;

TEST(PacketDescriptor, FindsTheShortestPacketAtTheEndOfABuffer)
{
    const Descriptor exact(QByteArray("OK"));
    const Descriptor nothing(QByteArray(""));
    const Descriptor ends(Descriptor::PrefixSuffix{"AB", "BC"}, 64);
    const Descriptor strings(Descriptor::PrefixSuffixStrings{"ä", {}}, 64);
    const Descriptor expression(QRegularExpression("b."), 64);
    const Descriptor invalid(QRegularExpression("("), 64);
    const Descriptor anything(64, {}, {});
    const Descriptor evaluator(64, {}, [](QByteArrayView data) { return data.size() % 3 == 0; });
    const struct
    {
        const Descriptor &descriptor;
        QByteArray buffer;
        std::optional<QByteArray> packet;
    } rows[] = {
        {exact, "xxOK", "OK"},
        {exact, "OKx", {}},
        {nothing, "x", {}},
        {ends, "ABxABBC", "ABBC"},
        {ends, "xABC", "ABC"},
        {ends, "ABCx", {}},
        {strings, "x\xC3\xA4y", "\xC3\xA4y"},
        {expression, "bbcd", "bcd"},
        {expression, "b\xC3", {}},
        {expression, "", {}},
        {invalid, "(", {}},
        {anything, "xy", "y"},
        {anything, "", {}},
        {evaluator, "abcdefg", "efg"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(row.descriptor.packetMatchingAtEndOfBuffer(row.buffer), row.packet);
        EXPECT_EQ(row.descriptor.dataIsValidPacket(row.packet.value_or(row.buffer)),
                  row.packet.has_value());
    }
}
