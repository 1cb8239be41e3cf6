#pragma once

#include "serial/ORSSerialBuffer.h"
#include "serial/ORSSerialPacketDescriptor.h"
#include "serial/PatternRun.h"

#include <QByteArray>

#include <optional>

namespace vorn {

// Finds a descriptor's packets in a stream of bytes. The answers are those of the descriptor's
// packetMatchingAtEndOfBuffer() on the newest bytes, but for a regular expression they take a time
// that does not grow with their number: walks through the expression's automaton tell whether a
// packet can end with a byte at all. (Expressions beyond the automaton, such as those with
// look-around or references, are tried at every place of the buffer for every byte.)
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
    ORSSerialPacketDescriptorPtr m_descriptor;
    ORSSerialBuffer m_buffer;
    std::optional<PatternRun> m_run;
};

} // namespace vorn
