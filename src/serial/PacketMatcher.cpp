#include "serial/PacketMatcher.h"

#include <utility>

namespace vorn {

PacketMatcher::PacketMatcher(ORSSerialPacketDescriptorPtr descriptor)
    : m_descriptor(std::move(descriptor)), m_buffer(m_descriptor->maximumPacketLength())
{
}

std::optional<QByteArray> PacketMatcher::append(char byte)
{
    m_buffer.appendData({&byte, 1});
    const QByteArrayView buffer = m_buffer.data();
    const qint64 least = leastLength();
    // A packet longer than the buffer has lost its first bytes.
    if (least == 0 || least > buffer.size())
        return std::nullopt;
    const qsizetype length = m_descriptor->lengthOfPacketAtEnd(buffer, least);
    if (length == 0)
        return std::nullopt;
    QByteArray packet = buffer.last(length).toByteArray();
    clear();
    return packet;
}

qint64 PacketMatcher::leastLength()
{
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
    m_sincePrefix = 0;
}

} // namespace vorn
