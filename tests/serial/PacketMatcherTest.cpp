#include "serial/PacketMatcher.h"

#include "serial/PacketExpression.h"

#include <QByteArrayList>
#include <QStringDecoder>

#include <gtest/gtest.h>

#include <functional>
#include <random>

using vorn::PacketExpression;
using vorn::PacketMatcher;

namespace {

using Test = std::function<bool(const QByteArray &)>;

Test naiveTest(const QRegularExpression &expression)
{
    return [expression](const QByteArray &candidate) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless |
                                                         QStringConverter::Flag::ConvertInitialBom);
        const QString text = decoder(candidate);
        return !decoder.hasError() && expression
                                          .match(text, 0, QRegularExpression::NormalMatch,
                                                 QRegularExpression::AnchorAtOffsetMatchOption)
                                          .hasMatch();
    };
}

class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(m_engine); }
    bool once(int in) { return below(in) == 0; }
    template <typename Value>
    Value of(const QList<Value> &list)
    {
        return list[below(static_cast<int>(list.size()))];
    }

private:
    std::mt19937 m_engine;
};

// Expressions of every construct, over few characters so that they often match.
QString randomExpression(Random &random, int depth)
{
    static const QByteArrayList atoms =
        QByteArray(
            "a a b b k ; ; , . . é \U0001F600 \\d \\w \\W \\S \\h \\N \\R \\x61 \\x{3b} "
            "\\x{e9} \\x{212a} [ab] [^;] [^\\n] []a] [^]a] [a-k;] [\\d;] [[:alpha:]] "
            "[^[:punct:]\\n] [[:<:]] [aé] [\\x41-\\x6b] [[;] \\; \n ^ $ \\b \\B \\A \\z \\Z \\G")
            .split(' ');
    static const QByteArrayList rare =
        QByteArray("\\1 (?i) (?=;) (?!a) (?<=a) (?<!b) (?m) (?#x) \\K \\pL \\Qa\\E \\X").split(' ');
    static const QByteArrayList groups = QByteArray("( ( (?: (?<n> (?> (?= (?!").split(' ');
    static const QByteArrayList quantifiers =
        QByteArray("* + ? *? +? ?? *+ ++ ?+ {2} {0} {1,3} {0,2} {2,} {2}+").split(' ');
    QByteArray text;
    for (int parts = 1 + random.below(4); parts > 0; --parts) {
        if (depth > 0 && random.once(4))
            text += groups[random.below(random.once(6) ? 7 : 5)] +
                    randomExpression(random, depth - 1).toUtf8() + ')';
        else
            text += random.of(random.once(30) ? rare : atoms);
        if (random.once(3))
            text += random.of(quantifiers);
        if (random.once(8))
            text += '|';
    }
    return QString::fromUtf8(text);
}

QByteArray randomStream(Random &random, int pieces)
{
    static const QByteArrayList kinds =
        QByteArray(
            "a_a_a_b_b_k_;_;_,_\n_\r_\r\n_A_1_ _é_\u212A_\u2028_\U0001F600_\xEF\xBB\xBF_\xC3_"
            "\xA9_\xFF_\xE2\x84_\xC0\x80_\xED\xA0\x80_\xF4\x90\x80\x80")
            .split('_');
    const int among = random.once(2) ? 15 : static_cast<int>(kinds.size());
    QByteArray stream;
    for (; pieces > 0; --pieces)
        stream += kinds[random.below(among)];
    return random.once(10) ? stream + '\0' : stream;
}

// Compares the matcher with the definition itself, which tries every tail of the newest bytes, and
// counts the packets found.
template <typename Description>
void expectThePacketsOfEveryTail(const Description &description, int maximumLength,
                                 const Test &accepts, const QByteArray &stream, int &found)
{
    PacketMatcher matcher(std::make_shared<const ORSSerialPacketDescriptor>(
        description, static_cast<quint64>(maximumLength)));
    QByteArray newest;
    for (const char byte : stream) {
        newest = (newest + byte).right(maximumLength);
        std::optional<QByteArray> wanted;
        for (qsizetype length = 1; length <= newest.size() && !wanted; ++length) {
            if (accepts(newest.right(length)))
                wanted = newest.right(length);
        }
        ASSERT_EQ(matcher.append(byte), wanted) << "of " << stream.toPercentEncoding().data();
        if (wanted) {
            newest.clear();
            ++found;
        }
    }
}

} // namespace

class RandomPackets : public testing::TestWithParam<unsigned>
{
protected:
    // Seed 0 stands for another one each time.
    const unsigned m_seed = GetParam() != 0 ? GetParam() : std::random_device()();
    const testing::ScopedTrace m_trace{__FILE__, __LINE__, "seed " + std::to_string(m_seed)};
    Random m_random{m_seed};
};

TEST_P(RandomPackets, AreTheOnesThatTryingEveryTailWithTheExpressionFinds)
{
    using Re = QRegularExpression;
    static const QList<Re::PatternOption> options = {Re::NoPatternOption,
                                                     Re::NoPatternOption,
                                                     Re::CaseInsensitiveOption,
                                                     Re::MultilineOption,
                                                     Re::DotMatchesEverythingOption,
                                                     Re::UseUnicodePropertiesOption,
                                                     Re::InvertedGreedinessOption,
                                                     Re::ExtendedPatternSyntaxOption};
    int expressions = 0;
    int searchable = 0;
    int found = 0;
    while (expressions < 1000) {
        const QString leading = m_random.once(8) ? m_random.of<QString>({"(?im)", "^", "^"}) : "";
        const Re expression(leading + randomExpression(m_random, 2),
                            m_random.of(options) | m_random.of(options));
        if (!expression.isValid())
            continue;
        ++expressions;
        searchable += PacketExpression(expression).isSearchable() ? 1 : 0;
        const int maximumLength = 1 + m_random.below(m_random.once(10) ? 20 : 10);
        ASSERT_NO_FATAL_FAILURE(expectThePacketsOfEveryTail(
            expression, maximumLength, naiveTest(expression), randomStream(m_random, 100), found))
            << qPrintable(expression.pattern()) << " options "
            << expression.patternOptions().toInt() << " maximum " << maximumLength;
    }
    // The comparison is worth something only if both ways are taken and packets are found.
    EXPECT_GT(searchable, expressions / 4);
    EXPECT_LT(searchable, expressions * 3 / 4);
    EXPECT_GT(found, expressions);
}

TEST_P(RandomPackets, AreTheOnesThatTryingEveryTailWithPrefixAndSuffixFinds)
{
    int found = 0;
    const auto end = [&]() -> std::optional<QByteArray> {
        return m_random.once(4) ? std::nullopt
                                : std::optional(randomStream(m_random, m_random.below(4)));
    };
    for (int i = 0; i < 1000; ++i) {
        const ORSSerialPacketDescriptor::PrefixSuffix ends{end(), end()};
        const int maximumLength = m_random.once(4) ? 200 : 1 + m_random.below(12);
        const auto accepts = [&](const QByteArray &candidate) {
            return (ends.prefix || ends.suffix) && candidate.startsWith(ends.prefix.value_or("")) &&
                   candidate.endsWith(ends.suffix.value_or(""));
        };
        ASSERT_NO_FATAL_FAILURE(expectThePacketsOfEveryTail(ends, maximumLength, accepts,
                                                            randomStream(m_random, 300), found));
    }
    EXPECT_GT(found, 1000);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPackets, testing::Values(1, 2, 0));

// The first two bytes alone are refused, since the atomic group takes both.
TEST(PacketMatcher, FindsAMatchThatMoreTextMakesPossible)
{
    PacketMatcher matcher(std::make_shared<const ORSSerialPacketDescriptor>(
        QRegularExpression(QStringLiteral("(?>ab\\z|a)b")), 8));
    EXPECT_FALSE(matcher.append('a'));
    EXPECT_FALSE(matcher.append('b'));
    EXPECT_EQ(matcher.append('c'), "abc");
}

// One search for each byte; trying every tail instead would make a port fall behind.
TEST(PacketMatcher, SearchesForExpressionsThatOnlyLookAhead)
{
    for (const char *pattern :
         {"!pos\\d+;", "^\\$GP[A-Z]{3},.*\\*[0-9A-F]{2}\\r\\n$", "(?:OK|ERROR)\\R",
          "\\x02[^\\x03]{1,1000}\\x03", "^(?<key>\\w+)=(?<value>[-+]?\\d+);", "a(?=b)"})
        EXPECT_TRUE(PacketExpression(QRegularExpression(pattern)).isSearchable()) << pattern;
}
