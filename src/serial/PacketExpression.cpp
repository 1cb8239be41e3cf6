#include "serial/PacketExpression.h"

#include <QChar>
#include <QVarLengthArray>

#include <algorithm>

namespace vorn {

namespace {

constexpr qsizetype kLongestCharacter = 4; // bytes, in UTF-8

bool isContinuation(char byte)
{
    return (static_cast<uchar>(byte) & 0xC0) == 0x80;
}

// The text at a buffer's end, decoded backwards.
class TailText
{
public:
    explicit TailText(QByteArrayView buffer)
        : m_rest(buffer), m_units(buffer.size()), m_begin(m_units.end())
    {
    }

    // Decodes back to the given index. False when the bytes from there on are not UTF-8; decoded()
    // is then the longest tail that is.
    bool decodeFrom(qsizetype start)
    {
        while (m_rest.size() > start)
            if (!decodeCharacter())
                return false;
        return true;
    }
    QStringView decoded() const { return {m_begin, m_units.end()}; }

private:
    bool decodeCharacter()
    {
        if (const auto last = static_cast<uchar>(m_rest.back()); last < 0x80) {
            *--m_begin = last;
            m_rest.chop(1);
            return true;
        }
        const qsizetype most = std::min(m_rest.size(), kLongestCharacter);
        qsizetype length = 1;
        while (length < most && isContinuation(m_rest[m_rest.size() - length]))
            ++length;
        const QByteArrayView bytes = m_rest.last(length);
        if (!bytes.isValidUtf8())
            return false;
        char32_t code = static_cast<uchar>(bytes.front()) & (0x7FU >> length);
        for (const char byte : bytes.sliced(1))
            code = code << 6 | (static_cast<uchar>(byte) & 0x3FU);
        if (QChar::requiresSurrogates(code)) {
            *--m_begin = QChar::lowSurrogate(code);
            *--m_begin = QChar::highSurrogate(code);
        } else {
            *--m_begin = static_cast<char16_t>(code);
        }
        m_rest.chop(length);
        return true;
    }

    QByteArrayView m_rest;
    QVarLengthArray<char16_t, 1024> m_units;
    char16_t *m_begin;
};

// True if nothing in the pattern can depend on the text before a match: no look-behind, \b, \B,
// \A, \G, \K, \X or [[:<:]], and a '^' at the start only. What might hide one of these (\Q, \c,
// verbs, options, references to the whole pattern) is refused, too. So is a positive look-ahead
// unless the pattern begins with a plain character: when the engine (PCRE2 10.42) takes the first
// character from a look-ahead, it may overlook a match.
bool looksOnlyAhead(const QRegularExpression &expression)
{
    constexpr QRegularExpression::PatternOptions kRefused =
        QRegularExpression::MultilineOption | QRegularExpression::ExtendedPatternSyntaxOption;
    static const QRegularExpression harmless(
        QStringLiteral(R"(\A\^?(?![*+?{]))" // a repeated '^' cannot be left out
                       R"((?:(?=[^\\([.$|][^*+?{])|(?!.*\(\?=)))"
                       R"((?:[^\\([^]|\\[^bBAGKXQEcg]|\[\^?(?!:[<>]))"
                       R"(|\((?!\*|\?(?:<[=!]|[\^0a-zA-Z-])))*+\z)"),
        QRegularExpression::DotMatchesEverythingOption);
    return !(expression.patternOptions() & kRefused) &&
           harmless.match(expression.pattern()).hasMatch();
}

// The expression for searching a whole text. A leading '^' holds at the start of every tail, so it
// is left out. Without the engine's JIT compiler, which overlooks some matches (PCRE2 10.42).
QRegularExpression searchFor(const QRegularExpression &expression)
{
    const QString pattern = expression.pattern();
    return QRegularExpression(QStringLiteral("(*NO_JIT)") + pattern.mid(pattern.startsWith(u'^')),
                              expression.patternOptions());
}

} // namespace

PacketExpression::PacketExpression(const QRegularExpression &expression)
    : m_expression(expression), m_isValid(expression.isValid()),
      m_isSearchable(m_isValid && looksOnlyAhead(expression)), m_search(searchFor(expression))
{
}

bool PacketExpression::accepts(QByteArrayView packet) const
{
    TailText text(packet);
    return text.decodeFrom(0) && matchesAtStart(text.decoded());
}

// An expression that only looks ahead matches at the start of some tail if and only if it matches
// anywhere in the longest tail. So most bytes cost one search, and the tails are tried only when
// there is a packet.
qsizetype PacketExpression::lengthOfPacketAtEnd(QByteArrayView buffer) const
{
    if (m_isSearchable) {
        TailText longest(buffer);
        longest.decodeFrom(0);
        const auto match = m_search.match(longest.decoded(), 0, QRegularExpression::NormalMatch,
                                          QRegularExpression::DontCheckSubjectStringMatchOption);
        // An invalid match has reached one of the engine's limits and proves nothing.
        if (match.isValid() && !match.hasMatch())
            return 0;
    }
    TailText tail(buffer);
    for (qsizetype start = buffer.size() - 1; start >= 0; --start) {
        if (isContinuation(buffer[start]))
            continue;
        // A longer tail than one that holds a wrong byte holds it, too.
        if (!tail.decodeFrom(start))
            return 0;
        if (matchesAtStart(tail.decoded()))
            return buffer.size() - start;
    }
    return 0;
}

// Nothing precedes the text's first character, so an assertion cannot look at anything there.
bool PacketExpression::matchesAtStart(QStringView text) const
{
    return m_isValid && m_expression
                            .match(text, 0, QRegularExpression::NormalMatch,
                                   QRegularExpression::AnchorAtOffsetMatchOption |
                                       QRegularExpression::DontCheckSubjectStringMatchOption)
                            .hasMatch();
}

} // namespace vorn
