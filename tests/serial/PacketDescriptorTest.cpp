#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using Descriptor = ORSSerialPacketDescriptor;
using Ends = Descriptor::PrefixSuffix;
using EndStrings = Descriptor::PrefixSuffixStrings;

constexpr quint64 Maximum = 64;

ORSSerialPacketDescriptorPtr exact(const QByteArray &data)
{
    return std::make_shared<const Descriptor>(data);
}

ORSSerialPacketDescriptorPtr between(std::optional<QByteArray> prefix,
                                     std::optional<QByteArray> suffix)
{
    return std::make_shared<const Descriptor>(Ends{std::move(prefix), std::move(suffix)}, Maximum);
}

ORSSerialPacketDescriptorPtr matching(const char *pattern)
{
    return std::make_shared<const Descriptor>(QRegularExpression(QString::fromUtf8(pattern)),
                                              Maximum);
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
        {"exact bytes not all there", exact("OK"), "K", {}},
        {"no bytes are no packet", exact(""), "x", {}},
        {"the innermost prefix", between("!", ";"), "!a!b;", "!b;"},
        {"a prefix too near for the suffix", between("A", "AAB"), "xAAAB", "AAB"},
        {"prefix and suffix that overlap", between("AB", "BC"), "xABC", "ABC"},
        {"a prefix without its suffix", between("AB", "BC"), "AB", {}},
        {"a suffix alone is the packet", between({}, "\r\n"), "text\r\n", "\r\n"},
        {"a prefix alone is the packet", between("AB", {}), "xABcd", "ABcd"},
        {"an empty prefix takes a byte", between("", {}), "xyz", "z"},
        {"neither prefix nor suffix", between({}, {}), "xyz", {}},
        {"a prefix far back", between("!", ";"), '!' + QByteArray(999, ';'),
         '!' + QByteArray(999, ';')},
        {"an expression in front of other text", matching("!\\d"), "x!1rest", "!1rest"},
        {"the shortest tail that matches", matching("\\w+;"), "abc;", "c;"},
        {"a start is the tail's start", matching("^b"), "ab", "b"},
        {"nothing is seen before the tail", matching("(?<=a)b|\\bc"), "abc", "c"},
        {"a tail that is not text", matching("."), "a\xC3", {}},
        {"a tail behind wrong bytes", matching(".*b"),
         "\xFF"
         "ab",
         "b"},
        {"a tail across wrong bytes",
         matching("a.*b"),
         "a\xFF"
         "b",
         {}},
        {"an overlong form is not text", matching("(?s)./"), "/\xC0\xAF", {}},
        {"characters, not bytes", matching("^..$"), "\u20AC\U0001F600", "\u20AC\U0001F600"},
        {"a byte order mark is a character", matching("a.b"),
         "a\xEF\xBB\xBF"
         "b",
         "a\xEF\xBB\xBF"
         "b"},
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
    const Descriptor descriptor(Maximum, {}, [&](QByteArrayView data) {
        asked.append(data.toByteArray());
        return data.size() == 3;
    });
    EXPECT_EQ(descriptor.packetMatchingAtEndOfBuffer("abcde"), "cde");
    EXPECT_EQ(asked, (QByteArrayList{"e", "de", "cde"}));
    EXPECT_FALSE(descriptor.packetMatchingAtEndOfBuffer("ab"));

    const Descriptor anything(Maximum, {}, {});
    EXPECT_EQ(anything.packetMatchingAtEndOfBuffer("ab"), "b");
    EXPECT_FALSE(anything.dataIsValidPacket(""));
}

TEST(PacketDescriptor, KeepsWhatItWasMadeFrom)
{
    const Descriptor bytes(QByteArray("abc"), 7);
    EXPECT_EQ(bytes.packetData(), "abc");
    EXPECT_EQ(bytes.maximumPacketLength(), 3U);
    EXPECT_EQ(bytes.userInfo(), 7);
    EXPECT_FALSE(bytes.prefix() || bytes.suffix() || bytes.regularExpression());

    const Descriptor strings(EndStrings{.prefixString = QStringLiteral("ä"), .suffixString = {}},
                             9);
    EXPECT_EQ(strings.prefix(), "\xC3\xA4");
    EXPECT_EQ(strings.suffix(), std::nullopt);
    EXPECT_EQ(strings.maximumPacketLength(), 9U);

    const QRegularExpression pattern(QStringLiteral("a+"));
    EXPECT_EQ(Descriptor(pattern, 9).regularExpression(), pattern);
}

TEST(PacketDescriptor, EqualsItselfOnly)
{
    const Descriptor one(QByteArray("a"));
    const Descriptor other(QByteArray("a"));
    EXPECT_EQ(one, one);
    EXPECT_FALSE(one == other);
    EXPECT_NE(qHash(one), qHash(other));
    EXPECT_EQ(qHash(one), qHash(one.uuid()));
}

TEST(SerialBuffer, KeepsTheNewestBytes)
{
    const struct
    {
        quint64 maximumLength;
        QByteArrayList appended;
        QByteArray held;
    } rows[] = {
        {4, {"ABCDEF"}, "CDEF"},
        {4, {"ABC", "DEF"}, "CDEF"},
        {4, {"ABCD", ""}, "ABCD"},
        {4, {"", "A"}, "A"},
        {0, {"ABC"}, ""},
        {std::numeric_limits<qint64>::max(), {"A", "B"}, "AB"},
        {std::numeric_limits<quint64>::max(), {"A", "B"}, "AB"},
    };
    for (const auto &row : rows) {
        ORSSerialBuffer buffer(row.maximumLength);
        for (const QByteArray &bytes : row.appended)
            buffer.appendData(bytes);
        EXPECT_EQ(buffer.data(), row.held);
        EXPECT_EQ(buffer.maximumLength(), row.maximumLength);
        buffer.clearBuffer();
        EXPECT_TRUE(buffer.data().isEmpty());
    }
}

TEST(SerialBuffer, SlidesOverALongStream)
{
    ORSSerialBuffer buffer(1000);
    QByteArray stream;
    for (int i = 0; i < 20000; ++i) {
        const char byte = static_cast<char>(i * i >> 3);
        buffer.appendData({&byte, 1});
        stream += byte;
        ASSERT_EQ(buffer.data(), QByteArrayView(stream).last(std::min<qsizetype>(i + 1, 1000)));
    }
}
