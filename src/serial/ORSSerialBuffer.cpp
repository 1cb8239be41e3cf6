#include "serial/ORSSerialBuffer.h"

void ORSSerialBuffer::appendData(QByteArrayView data)
{
    m_internalBuffer.append(data);
    const auto length = static_cast<quint64>(m_internalBuffer.size());
    // Removing from the front only moves the array's start, and later appends reuse that space, so
    // appending to a full buffer is as cheap as to an empty one.
    if (length > m_maximumLength)
        m_internalBuffer.remove(0, static_cast<qsizetype>(length - m_maximumLength));
}

void ORSSerialBuffer::clearBuffer()
{
    // Unlike clear(), keeps the memory for the next packet.
    m_internalBuffer.resize(0);
}
