#include "serial/ORSSerialPacketDescriptor.h"

#include "serial/PacketExpression.h"

#include <algorithm>
#include <utility>

namespace {

using PrefixSuffix = ORSSerialPacketDescriptor::PrefixSuffix;
using PrefixSuffixStrings = ORSSerialPacketDescriptor::PrefixSuffixStrings;

std::optional<QByteArray> utf8(const std::optional<QString> &text)
{
    return text ? std::optional(text->toUtf8()) : std::nullopt;
}

bool hasEnds(QByteArrayView packet, const PrefixSuffix &ends)
{
    return (ends.prefix || ends.suffix) && (!ends.prefix || packet.startsWith(*ends.prefix)) &&
           (!ends.suffix || packet.endsWith(*ends.suffix));
}

} // namespace

ORSSerialPacketDescriptor::ORSSerialPacketDescriptor(quint64 maximumPacketLength, QVariant userInfo,
                                                     Evaluator responseEvaluator)
    : m_maximumPacketLength(maximumPacketLength), m_userInfo(std::move(userInfo)),
      m_responseEvaluator(responseEvaluator ? std::move(responseEvaluator)
                                            : [](QByteArrayView data) { return !data.isEmpty(); })
{
}

ORSSerialPacketDescriptor::ORSSerialPacketDescriptor(const QByteArray &packetData,
                                                     QVariant userInfo)
    : m_packetData(packetData), m_maximumPacketLength(static_cast<quint64>(packetData.size())),
      m_userInfo(std::move(userInfo)),
      m_responseEvaluator([packetData](QByteArrayView data) { return data == packetData; })
{
}

ORSSerialPacketDescriptor::ORSSerialPacketDescriptor(const PrefixSuffix &ends,
                                                     quint64 maximumPacketLength, QVariant userInfo)
    : m_ends(ends), m_maximumPacketLength(maximumPacketLength), m_userInfo(std::move(userInfo)),
      m_responseEvaluator([ends](QByteArrayView data) { return hasEnds(data, ends); })
{
}

ORSSerialPacketDescriptor::ORSSerialPacketDescriptor(const PrefixSuffixStrings &ends,
                                                     quint64 maximumPacketLength, QVariant userInfo)
    : ORSSerialPacketDescriptor(PrefixSuffix{utf8(ends.prefixString), utf8(ends.suffixString)},
                                maximumPacketLength, std::move(userInfo))
{
}

ORSSerialPacketDescriptor::ORSSerialPacketDescriptor(const QRegularExpression &regularExpression,
                                                     quint64 maximumPacketLength, QVariant userInfo)
    : m_expression(std::make_shared<const vorn::PacketExpression>(regularExpression)),
      m_maximumPacketLength(maximumPacketLength), m_userInfo(std::move(userInfo)),
      m_responseEvaluator(
          [expression = m_expression](QByteArrayView data) { return expression->accepts(data); })
{
}

ORSSerialPacketDescriptor::~ORSSerialPacketDescriptor() = default;

std::optional<QRegularExpression> ORSSerialPacketDescriptor::regularExpression() const
{
    return m_expression ? std::optional(m_expression->expression()) : std::nullopt;
}

std::optional<QByteArray>
ORSSerialPacketDescriptor::packetMatchingAtEndOfBuffer(QByteArrayView buffer) const
{
    const qsizetype length = lengthOfPacketAtEnd(buffer, 1);
    return length > 0 ? std::optional(buffer.last(length).toByteArray()) : std::nullopt;
}

// The length of the shortest packet at the end of the buffer that is at least leastLength bytes
// long (always 1 with an expression), or 0. Calls the evaluator only for descriptors that were made
// from one.
qsizetype ORSSerialPacketDescriptor::lengthOfPacketAtEnd(QByteArrayView buffer,
                                                         qsizetype leastLength) const
{
    if (m_expression)
        return m_expression->lengthOfPacketAtEnd(buffer);
    if (m_packetData)
        return m_packetData->size() >= leastLength && buffer.endsWith(*m_packetData)
                   ? m_packetData->size()
                   : 0;
    if (m_ends.prefix || m_ends.suffix)
        return lengthByPrefixAndSuffix(buffer, leastLength);
    return lengthByEvaluator(buffer, leastLength);
}

qsizetype ORSSerialPacketDescriptor::lengthByPrefixAndSuffix(QByteArrayView buffer,
                                                             qsizetype leastLength) const
{
    const QByteArrayView prefix = m_ends.prefix.value_or(QByteArray());
    const QByteArrayView suffix = m_ends.suffix.value_or(QByteArray());
    const qsizetype least = std::max({leastLength, prefix.size(), suffix.size()});
    if (buffer.size() < least || !buffer.endsWith(suffix))
        return 0;
    // The shortest packet begins at the last prefix that leaves it the least length.
    const QByteArrayView range = buffer.chopped(least - prefix.size());
    const auto found = std::find_end(range.begin(), range.end(), prefix.begin(), prefix.end());
    const bool isMissing = found == range.end() && !prefix.isEmpty();
    return isMissing ? 0 : buffer.size() - (found - range.begin());
}

qsizetype ORSSerialPacketDescriptor::lengthByEvaluator(QByteArrayView buffer,
                                                       qsizetype leastLength) const
{
    for (qsizetype length = leastLength; length <= buffer.size(); ++length)
        if (m_responseEvaluator(buffer.last(length)))
            return length;
    return 0;
}
