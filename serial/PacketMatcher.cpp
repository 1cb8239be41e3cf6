#include "serial/PacketMatcher.h"

#include "serial/PacketExpression.h"

#include <utility>

namespace vorn {

PacketMatcher::PacketMatcher(ORSSerialPacketDescriptorPtr descriptor)
    : m_descriptor(std::move(descriptor)), m_buffer(m_descriptor->maximumPacketLength())
{
    if (m_descriptor->m_expression && m_descriptor->m_expression->automaton())
        m_run.emplace(m_descriptor->m_expression->automaton());
}

std::optional<QByteArray> PacketMatcher::append(char byte)
{
    m_buffer.appendData({&byte, 1});
    const QByteArrayView buffer = m_buffer.data();
    // No tail matched before this byte, so one that matches now is a walk that ends with it; a walk
    // longer than the buffer began with bytes that are gone.
    const qint64 leastLength = m_run ? m_run->append(byte) : 1;
    if (leastLength == 0 || leastLength > buffer.size())
        return std::nullopt;
    const qsizetype length = m_descriptor->lengthOfPacketAtEnd(buffer, leastLength);
    if (length == 0)
        return std::nullopt;
    QByteArray packet = buffer.last(length).toByteArray();
    clear();
    return packet;
}

void PacketMatcher::clear()
{
    m_buffer.clearBuffer();
    if (m_run)
        m_run->reset();
}

} // namespace vorn
