#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Descriptor = ORSSerialPacketDescriptor;
using Ends = Descriptor::PrefixSuffix;

constexpr quint64 kMaximum = 64;

ORSSerialPacketDescriptorPtr exact(const QByteArray &data)
{
    return std::make_shared<const Descriptor>(data);
}

ORSSerialPacketDescriptorPtr between(std::optional<QByteArray> prefix,
                                     std::optional<QByteArray> suffix)
{
    return std::make_shared<const Descriptor>(Ends{std::move(prefix), std::move(suffix)}, kMaximum);
}

ORSSerialPacketDescriptorPtr matching(const char *pattern)
{
    return std::make_shared<const Descriptor>(QRegularExpression(QString::fromUtf8(pattern)),
                                              kMaximum);
}

} // namespace

TEST(PacketDescriptor, FindsTheShortestAcceptedTail)
{
    const struct
    {
        const char *what;
        ORSSerialPacketDescriptorPtr descriptor;
        QByteArray buffer;
        std::optional<QByteArray> packet;
    } rows[] = {
        {"exact bytes behind others", exact("OK"), "xxOK", "OK"},
        {"exact bytes not at the end", exact("OK"), "OKx", {}},
        {"no bytes are no packet", exact(""), "x", {}},
        {"a suffix alone is the packet", between({}, "\r\n"), "text\r\n", "\r\n"},
        {"a prefix alone is the packet", between("AB", {}), "xABcd", "ABcd"},
        {"an empty prefix takes a byte", between("", {}), "xyz", "z"},
        {"neither prefix nor suffix", between({}, {}), "xyz", {}},
        {"a start is the tail's start", matching("^b"), "ab", "b"},
        {"nothing is seen before the tail", matching("(?<=a)b|\\bc"), "abc", "c"},
        {"a tail that is not text", matching("."), "a\xC3", {}},
        {"an expression that is not valid", matching("("), "(", {}},
        {"an empty buffer", matching(""), "", {}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(row.descriptor->packetMatchingAtEndOfBuffer(row.buffer), row.packet) << row.what;
        // Each descriptor's own test agrees on the packet.
        if (row.packet) {
            EXPECT_TRUE(row.descriptor->dataIsValidPacket(*row.packet)) << row.what;
        }
    }
}

TEST(PacketDescriptor, AsksAnEvaluatorFromTheShortestTailOn)
{
    QByteArrayList asked;
    const Descriptor descriptor(kMaximum, {}, [&](QByteArrayView data) {
        asked.append(data.toByteArray());
        return data.size() == 3;
    });
    EXPECT_EQ(descriptor.packetMatchingAtEndOfBuffer("abcde"), "cde");
    EXPECT_EQ(asked, (QByteArrayList{"e", "de", "cde"}));
    EXPECT_FALSE(descriptor.packetMatchingAtEndOfBuffer("ab"));

    const Descriptor anything(kMaximum, {}, {});
    EXPECT_EQ(anything.packetMatchingAtEndOfBuffer("ab"), "b");
    EXPECT_FALSE(anything.dataIsValidPacket(""));

    const Descriptor strings(Descriptor::PrefixSuffixStrings{"ä", {}}, 9);
    EXPECT_EQ(strings.packetMatchingAtEndOfBuffer("x\xC3\xA4y"), "\xC3\xA4y");
}

TEST(SerialBuffer, KeepsTheNewestBytesOfALongStream)
{
    constexpr auto kEndless = std::numeric_limits<quint64>::max();
    for (const quint64 maximum : {quint64{0}, quint64{4}, quint64{1000}, kEndless}) {
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
