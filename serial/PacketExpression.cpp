#include "serial/PacketExpression.h"

#include "serial/PatternAutomaton.h"
#include "serial/PatternReader.h"

#include <QChar>
#include <QVarLengthArray>

#include <algorithm>

namespace vorn {

namespace {

constexpr qsizetype LongestCharacter = 4; // bytes, in UTF-8

// The number of bytes in the last character of UTF-8 text; 0 when the text does not end in one.
qsizetype lengthOfLastCharacter(QByteArrayView text)
{
    if (static_cast<uchar>(text.back()) < 0x80)
        return 1;
    const qsizetype most = std::min(text.size(), LongestCharacter);
    qsizetype length = 1;
    while (length < most && (static_cast<uchar>(text[text.size() - length]) & 0xC0) == 0x80)
        ++length;
    return text.last(length).isValidUtf8() ? length : 0;
}

char32_t decodedCharacter(QByteArrayView bytes)
{
    const auto lead = static_cast<uchar>(bytes.front());
    if (bytes.size() == 1)
        return lead;
    char32_t character = lead & (0x7FU >> bytes.size());
    for (const char byte : bytes.sliced(1))
        character = character << 6 | (static_cast<uchar>(byte) & 0x3FU);
    return character;
}

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
    if (hasLineStarts(m_expression)) {
        m_firstCharacters.set();
        return;
    }
    for (std::size_t c = 0; c < m_firstCharacters.size(); ++c)
        m_firstCharacters[c] = mayBeginWith(m_expression, static_cast<char>(c));
}

bool PacketExpression::accepts(QByteArrayView packet) const
{
    return packet.isEmpty() ? matchesAtStart(u"") : lengthOfPacketAtEnd(packet, packet.size()) > 0;
}

qsizetype PacketExpression::lengthOfPacketAtEnd(QByteArrayView buffer, qsizetype leastLength) const
{
    // Decoded from the end on, so that each tail's text is at hand when its turn comes. A tail that
    // begins inside a character is not text, and neither is a longer one than a tail that holds a
    // wrong byte.
    QVarLengthArray<char16_t, 1024> units(buffer.size());
    qsizetype begin = units.size();
    qsizetype rest = buffer.size();
    while (m_isValid && rest > 0) {
        const qsizetype size = lengthOfLastCharacter(buffer.first(rest));
        if (size == 0)
            return 0;
        rest -= size;
        const char32_t character = decodedCharacter(buffer.sliced(rest, size));
        const auto encoded = QChar::fromUcs4(character);
        begin -= encoded.operator QStringView().size();
        std::copy(encoded.begin(), encoded.end(), units.begin() + begin);
        const qsizetype length = buffer.size() - rest;
        const bool mayBegin = character >= m_firstCharacters.size() || m_firstCharacters[character];
        if (length >= leastLength && mayBegin &&
            matchesAtStart(QStringView(units.data() + begin, units.size() - begin)))
            return length;
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
