#include "serial/PacketExpression.h"

#include "serial/PatternAutomaton.h"
#include "serial/PatternReader.h"

#include <QChar>
#include <QVarLengthArray>

#include <algorithm>

namespace vorn {

namespace {

constexpr qsizetype LongestCharacter = 4; // bytes, in UTF-8
constexpr std::size_t AsciiEnd = 0x80;
constexpr std::size_t ContinuationEnd = 0xC0;

bool isContinuation(char byte)
{
    return (static_cast<uchar>(byte) & 0xC0) == 0x80;
}

// The text of a buffer's tails, decoded from the end on, no further than is asked for.
class TailText
{
public:
    explicit TailText(QByteArrayView buffer)
        : m_rest(buffer), m_units(buffer.size()), m_begin(m_units.end())
    {
    }

    // Decodes what lies between the given place and what is decoded. False when that is not text.
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
        const qsizetype most = std::min(m_rest.size(), LongestCharacter);
        qsizetype length = 1;
        while (length < most && isContinuation(m_rest[m_rest.size() - length]))
            ++length;
        const QByteArrayView bytes = m_rest.last(length);
        const auto lead = static_cast<uchar>(bytes.front());
        const bool isAscii = length == 1 && lead < AsciiEnd;
        if (!isAscii && !bytes.isValidUtf8())
            return false;
        char32_t code = isAscii ? lead : lead & (0x7FU >> length);
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

// Of all constructs, a line's start behind a line's end is the only one of which a partial match
// does not tell that more text may bring it.
bool hasLineStarts(const QRegularExpression &expression)
{
    static const QRegularExpression inlineOption(QStringLiteral("\\(\\?[\\^a-zA-Z-]*m"));
    return expression.patternOptions().testFlag(QRegularExpression::MultilineOption) ||
           expression.pattern().contains(inlineOption);
}

bool mayBeginWith(const QRegularExpression &expression, char character)
{
    const auto match = expression.match(QString(QLatin1Char(character)), 0,
                                        QRegularExpression::PartialPreferCompleteMatch,
                                        QRegularExpression::AnchorAtOffsetMatchOption);
    // No partial match: nothing that could follow the character makes it a match.
    return match.hasMatch() || match.hasPartialMatch() || !match.isValid();
}

} // namespace

PacketExpression::PacketExpression(const QRegularExpression &expression)
    : m_expression(expression), m_isValid(expression.isValid()),
      m_automaton(m_isValid ? PatternReader::read(expression) : nullptr)
{
    if (!m_isValid)
        return;
    const bool mayBeginAnyhow = hasLineStarts(m_expression);
    for (std::size_t byte = 0; byte < AsciiEnd; ++byte)
        m_firstBytes[byte] = mayBeginAnyhow || mayBeginWith(m_expression, static_cast<char>(byte));
    // A tail that begins inside a character is not text; of other characters little is known.
    for (std::size_t byte = ContinuationEnd; byte < m_firstBytes.size(); ++byte)
        m_firstBytes.set(byte);
}

bool PacketExpression::accepts(QByteArrayView packet) const
{
    return packet.isEmpty() ? matchesAtStart(u"") : lengthOfPacketAtEnd(packet, packet.size()) > 0;
}

qsizetype PacketExpression::lengthOfPacketAtEnd(QByteArrayView buffer, qsizetype leastLength) const
{
    TailText text(buffer);
    for (qsizetype start = buffer.size() - leastLength; start >= 0; --start) {
        if (!m_firstBytes[static_cast<uchar>(buffer[start])])
            continue;
        // A longer tail than one that holds a wrong byte holds it, too.
        if (!text.decodeFrom(start))
            return 0;
        if (matchesAtStart(text.decoded()))
            return buffer.size() - start;
    }
    return 0;
}

// The text is a whole of its own: its first character has nothing before it that an assertion
// might look at.
bool PacketExpression::matchesAtStart(QStringView text) const
{
    return m_isValid && m_expression
                            .match(text, 0, QRegularExpression::NormalMatch,
                                   QRegularExpression::AnchorAtOffsetMatchOption |
                                       QRegularExpression::DontCheckSubjectStringMatchOption)
                            .hasMatch();
}

} // namespace vorn
