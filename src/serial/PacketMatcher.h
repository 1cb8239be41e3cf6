#pragma once

#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"
#include "serial/PatternRun.h"

#include <QByteArray>

#include <optional>

namespace vorn {

// Finds a descriptor's packets in a stream of bytes. The answers are those of the descriptor's
// packetMatchingAtEndOfBuffer() on the newest bytes, in a time that does not grow with their
// number: what came before tells whether a packet can end with a byte at all. Two kinds are tried
// at every length instead: evaluators, and expressions with constructs that PatternReader does not
// know.
//
// One owner, one thread at a time.
class PacketMatcher
{
public:
    // Keeps as many bytes as the descriptor's longest packet has.
    explicit PacketMatcher(ORSSerialPacketDescriptorPtr descriptor);

    // Takes the next byte. When it completes a packet, returns it and starts afresh behind it.
    std::optional<QByteArray> append(char byte);
    void clear();

    const ORSSerialPacketDescriptorPtr &descriptor() const { return m_descriptor; }
    const ORSSerialBuffer &buffer() const { return m_buffer; }

private:
    // The least length of a packet that ends with the newest byte, 0 when there is none.
    qint64 leastLengthWith(char byte);

    ORSSerialPacketDescriptorPtr m_descriptor;
    ORSSerialBuffer m_buffer;
    std::optional<PatternRun> m_run;
    // Bytes since the newest prefix began, 0 when there was none.
    qint64 m_sincePrefix = 0;
};

} // namespace vorn
