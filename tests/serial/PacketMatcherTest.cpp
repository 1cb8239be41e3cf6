#include "serial/PacketMatcher.h"

#include "serial/PacketExpression.h"

#include <QStringDecoder>

#include <gtest/gtest.h>

#include <functional>
#include <random>

using vorn::PacketExpression;
using vorn::PacketMatcher;

namespace {

using Re = QRegularExpression;
using Test = std::function<bool(const QByteArray &)>;

// Text, line ends, characters of two to four bytes, and bytes that are not UTF-8.
QByteArray randomStream(std::mt19937 &random, unsigned pieces)
{
    static const QByteArrayList kinds =
        QByteArray("a_a_b_b_;_;_\n_\r\n_A_1_ _é_\u212A_\u2028_\U0001F600_\xC3_\xA9_\xFF_\xE2\x84_"
                   "\xC0\x80_\xED\xA0\x80_\xF4\x90\x80\x80")
            .split('_');
    const unsigned among = random() % 2 ? 11 : static_cast<unsigned>(kinds.size());
    QByteArray stream;
    for (; pieces > 0; --pieces)
        stream += kinds[static_cast<qsizetype>(random() % among)];
    return stream;
}

// Compares the matcher with the definition itself, which tries every tail of the newest bytes, and
// returns how many packets were found.
template <typename Description>
int comparePackets(const Description &description, qsizetype maximumLength, const Test &accepts,
                   const QByteArray &stream)
{
    PacketMatcher matcher(std::make_shared<const ORSSerialPacketDescriptor>(
        description, static_cast<quint64>(maximumLength)));
    QByteArray newest;
    int found = 0;
    for (const char byte : stream) {
        newest = (newest + byte).right(maximumLength);
        std::optional<QByteArray> wanted;
        for (qsizetype length = 1; length <= newest.size() && !wanted; ++length)
            if (accepts(newest.right(length)))
                wanted = newest.right(length);
        const auto packet = matcher.append(byte);
        EXPECT_EQ(packet, wanted) << "in " << stream.toPercentEncoding().constData();
        if (packet != wanted)
            return found;
        if (wanted) {
            newest.clear();
            ++found;
        }
    }
    return found;
}

int compareWithExpression(const Re &expression)
{
    const auto accepts = [&](const QByteArray &candidate) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless |
                                                         QStringConverter::Flag::ConvertInitialBom);
        const QString text = decoder(candidate);
        return !decoder.hasError() &&
               expression.match(text, 0, Re::NormalMatch, Re::AnchorAtOffsetMatchOption).hasMatch();
    };
    std::mt19937 random(1);
    int found = 0;
    for (int i = 0; i < 40; ++i)
        found += comparePackets(expression, 1 + i % 9, accepts, randomStream(random, 200));
    return found;
}

} // namespace

// One search for each byte is enough for these; trying every tail would make a port fall behind.
TEST(PacketMatcher, FindsThePacketsOfExpressionsThatOnlyLookAhead)
{
    for (const char *pattern :
         {"a+;", "^a.*;$", "(?:a|b)\\R", "a[^;]{1,5};", "^(?<key>\\w+)(?<end>;)", "a(?=b)", "é.",
          "\u212A", "[^a]b", "^$|ab", "(?>ab\\z|a)b", "[[:alpha:]]{2}", "a(?!b)", "\\p{Lu}", ";?b"})
        for (const auto options : {Re::NoPatternOption, Re::CaseInsensitiveOption}) {
            SCOPED_TRACE(pattern);
            const Re expression(QString::fromUtf8(pattern), options);
            EXPECT_TRUE(PacketExpression(expression).isSearchable());
            EXPECT_GT(compareWithExpression(expression), 0);
        }
}

// For these, what precedes a tail would matter to a search.
TEST(PacketMatcher, FindsThePacketsOfExpressionsThatLookBehind)
{
    for (const char *pattern :
         {"(?<=a)b|;", "(?<!a)b", "\\bb", "a\\B", "\\Aa", "\\Ga", "a\\Kb", "\\Xb", "[[:<:]]b",
          "\\Qa\\E", "(?m)^b", "(a|^b)", "(?=a)ab", "(?=;)", "(?i)^b"}) {
        SCOPED_TRACE(pattern);
        const Re expression(QString::fromUtf8(pattern));
        EXPECT_FALSE(PacketExpression(expression).isSearchable());
        EXPECT_GT(compareWithExpression(expression), 0);
    }
    for (const auto option : {Re::MultilineOption, Re::ExtendedPatternSyntaxOption}) {
        const Re expression(QStringLiteral("^b"), option);
        EXPECT_FALSE(PacketExpression(expression).isSearchable());
        EXPECT_GT(compareWithExpression(expression), 0);
    }
}

TEST(PacketMatcher, FindsThePacketsBetweenPrefixAndSuffix)
{
    std::mt19937 random(1);
    const auto end = [&]() -> std::optional<QByteArray> {
        return random() % 4 == 0 ? std::nullopt : std::optional(randomStream(random, random() % 4));
    };
    int found = 0;
    for (int i = 0; i < 1000; ++i) {
        const ORSSerialPacketDescriptor::PrefixSuffix ends{end(), end()};
        const auto accepts = [&](const QByteArray &candidate) {
            return (ends.prefix || ends.suffix) && candidate.startsWith(ends.prefix.value_or("")) &&
                   candidate.endsWith(ends.suffix.value_or(""));
        };
        found +=
            comparePackets(ends, i % 4 == 0 ? 200 : 1 + i % 12, accepts, randomStream(random, 300));
    }
    EXPECT_GT(found, 1000);
}
