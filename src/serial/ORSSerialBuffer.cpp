#include "serial/ORSSerialBuffer.h"

void ORSSerialBuffer::appendData(QByteArrayView data)
{
    m_internalBuffer.append(data);
    const auto length = static_cast<quint64>(m_internalBuffer.size());
    // Removing from the front only moves the array's start; the space there is reused by later
    // appends, so a byte into a full buffer costs the same few instructions as into an empty one.
    if (length > m_maximumLength)
        m_internalBuffer.remove(0, static_cast<qsizetype>(length - m_maximumLength));
}

void ORSSerialBuffer::clearBuffer()
{
    // Not clear(): the memory serves the next packet.
    m_internalBuffer.resize(0);
}
