#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"

#include <gtest/gtest.h>

#include <limits>

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
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_EQ(row.descriptor.packetMatchingAtEndOfBuffer(row.buffer), row.packet);
        EXPECT_EQ(row.descriptor.dataIsValidPacket(row.packet.value_or(row.buffer)),
                  row.packet.has_value());
    }
}

TEST(PacketDescriptor, AsksAnEvaluatorFromTheShortestTailOn)
{
    QByteArrayList asked;
    const Descriptor descriptor(64, {}, [&](QByteArrayView data) {
        asked.append(data.toByteArray());
        return data.size() == 3;
    });
    EXPECT_EQ(descriptor.packetMatchingAtEndOfBuffer("abcde"), "cde");
    EXPECT_EQ(asked, (QByteArrayList{"e", "de", "cde"}));
}

TEST(SerialBuffer, KeepsTheNewestBytes)
{
    for (const quint64 maximum : {quint64{0}, quint64{4}, std::numeric_limits<quint64>::max()}) {
        ORSSerialBuffer buffer(maximum);
        QByteArray stream;
        for (int i = 0; i < 5000; ++i) {
            const QByteArray bytes(i % 7, static_cast<char>(i));
            buffer.appendData(bytes);
            stream += bytes;
            const auto kept = std::min(maximum, static_cast<quint64>(stream.size()));
            ASSERT_EQ(buffer.data(), QByteArrayView(stream).last(static_cast<qsizetype>(kept)));
        }
        buffer.clearBuffer();
        EXPECT_TRUE(buffer.data().isEmpty());
    }
}
