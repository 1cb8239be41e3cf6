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
    const qint64 leastLength = leastLengthWith(byte);
    // One that is longer than the buffer began with bytes that are gone.
    if (leastLength == 0 || leastLength > buffer.size())
        return std::nullopt;
    const qsizetype length = m_descriptor->lengthOfPacketAtEnd(buffer, leastLength);
    if (length == 0)
        return std::nullopt;
    QByteArray packet = buffer.last(length).toByteArray();
    clear();
    return packet;
}

qint64 PacketMatcher::leastLengthWith(char byte)
{
    if (m_run)
        return m_run->append(byte);
    const auto &prefix = m_descriptor->prefix();
    if (!prefix || prefix->isEmpty())
        return 1;
    if (m_buffer.data().endsWith(*prefix))
        m_sincePrefix = prefix->size();
    else if (m_sincePrefix > 0)
        ++m_sincePrefix;
    return m_sincePrefix;
}

void PacketMatcher::clear()
{
    m_buffer.clearBuffer();
    if (m_run)
        m_run->reset();
    m_sincePrefix = 0;
}

} // namespace vorn
