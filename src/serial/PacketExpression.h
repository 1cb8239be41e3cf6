#pragma once

#include <QByteArrayView>
#include <QRegularExpression>
#include <QStringView>

namespace vorn {

// A regular expression as the test of a packet: it accepts UTF-8 text at whose start it matches.
// Every character counts, a byte order mark too. Immutable; any thread.
class PacketExpression
{
public:
    explicit PacketExpression(const QRegularExpression &expression);

    const QRegularExpression &expression() const { return m_expression; }
    // True when one search rules out a buffer without a packet; when not, each of its tails is
    // tried.
    bool isSearchable() const { return m_isSearchable; }

    bool accepts(QByteArrayView packet) const;
    // The number of bytes in the shortest tail that is accepted, 0 when there is none.
    qsizetype lengthOfPacketAtEnd(QByteArrayView buffer) const;

private:
    bool matchesAtStart(QStringView text) const;

    const QRegularExpression m_expression;
    const bool m_isValid;
    const bool m_isSearchable;
    const QRegularExpression m_search;
};

} // namespace vorn
