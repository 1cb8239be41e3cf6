#pragma once

#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"

#include <QByteArray>

#include <optional>

namespace vorn {

// Finds a descriptor's packets in a stream: after each byte, what packetMatchingAtEndOfBuffer()
// finds in the newest bytes.
//
// One owner, one thread at a time.
class PacketMatcher
{
public:
    // Keeps as many bytes as the descriptor's longest packet can have.
    explicit PacketMatcher(ORSSerialPacketDescriptorPtr descriptor);

    // Appends a byte. If it completes a packet, returns the packet and starts over.
    std::optional<QByteArray> append(char byte);
    void clear();

    const ORSSerialPacketDescriptorPtr &descriptor() const { return m_descriptor; }
    const ORSSerialBuffer &buffer() const { return m_buffer; }

private:
    // No packet that ends with the newest byte is shorter; 0 when none ends there.
    qint64 leastLength();

    ORSSerialPacketDescriptorPtr m_descriptor;
    ORSSerialBuffer m_buffer;
    // Bytes since the newest prefix began, 0 when there was none.
    qint64 m_sincePrefix = 0;
};

} // namespace vorn
