#pragma once

#include <QByteArrayView>
#include <QRegularExpression>
#include <QStringView>

#include <bitset>
#include <memory>

namespace vorn {

class PatternAutomaton;

// A regular expression as the test of a packet: it accepts UTF-8 text at whose start it matches.
// Every character counts, a byte order mark too. Immutable; any thread.
class PacketExpression
{
public:
    explicit PacketExpression(const QRegularExpression &expression);

    const QRegularExpression &expression() const { return m_expression; }
    // Foretells where packets end; null when the expression is beyond it.
    const std::shared_ptr<const PatternAutomaton> &automaton() const { return m_automaton; }

    bool accepts(QByteArrayView packet) const;

    // The number of bytes in the shortest tail of at least the given length that is accepted, 0
    // when there is none.
    qsizetype lengthOfPacketAtEnd(QByteArrayView buffer, qsizetype leastLength) const;

private:
    bool matchesAtStart(QStringView text) const;

    const QRegularExpression m_expression;
    const bool m_isValid;
    // The bytes that text which matches can begin with.
    std::bitset<256> m_firstBytes;
    const std::shared_ptr<const PatternAutomaton> m_automaton;
};

} // namespace vorn
