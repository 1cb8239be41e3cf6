#pragma once

#include <QByteArrayView>
#include <QRegularExpression>
#include <QStringView>

namespace vorn {

// A regular expression that recognizes packets: UTF-8 text at whose start it matches. A byte order
// mark is a character like any other. Immutable; any thread.
class PacketExpression
{
public:
    explicit PacketExpression(const QRegularExpression &expression);

    const QRegularExpression &expression() const { return m_expression; }
    // True if a single search can rule out that a buffer holds a packet. Otherwise every tail of
    // the buffer is tried.
    bool isSearchable() const { return m_isSearchable; }

    bool accepts(QByteArrayView packet) const;
    // The length in bytes of the shortest accepted tail, or 0.
    qsizetype lengthOfPacketAtEnd(QByteArrayView buffer) const;

private:
    bool matchesAtStart(QStringView text) const;

    const QRegularExpression m_expression;
    const bool m_isValid;
    const bool m_isSearchable;
    const QRegularExpression m_search;
};

} // namespace vorn
