#include "serial/ORSSerialPacketDescriptor.h"

#include "serial/PacketExpression.h"

#include <algorithm>
#include <cstring>
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

// The last place where the bytes hold the part, -1 when they do not. An idle line may repeat a byte
// that the part begins or ends with for ever: so both its ends are compared, and for many places at
// once in a loop of fixed length, which compilers turn into vector instructions.
qsizetype lastPlace(QByteArrayView bytes, QByteArrayView part)
{
    constexpr qsizetype Block = 64;
    qsizetype place = bytes.size() - part.size();
    if (part.isEmpty() || place < 0)
        return place;
    const char front = part.front();
    const char back = part.back();
    const char *const fronts = bytes.data();
    const char *const backs = fronts + part.size() - 1;
    while (place >= 0) {
        const qsizetype first = std::max<qsizetype>(place - (Block - 1), 0);
        if (place - first == Block - 1) {
            unsigned found = 0;
            for (qsizetype i = 0; i < Block; ++i)
                found |= static_cast<unsigned>(fronts[first + i] == front) &
                         static_cast<unsigned>(backs[first + i] == back);
            if (found == 0) {
                place = first - 1;
                continue;
            }
        }
        for (; place >= first; --place) {
            if (fronts[place] == front && backs[place] == back &&
                bytes.sliced(place, part.size()) == part)
                return place;
        }
    }
    return -1;
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

// The number of bytes in the shortest packet of at least the given length at the buffer's end, 0
// when there is none. What the evaluator would say of each tail is found without asking it where
// the kind of packet allows.
qsizetype ORSSerialPacketDescriptor::lengthOfPacketAtEnd(QByteArrayView buffer,
                                                         qsizetype leastLength) const
{
    if (m_expression)
        return m_expression->lengthOfPacketAtEnd(buffer, leastLength);
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
    // The shortest packet begins at the last place that still leaves it the least length.
    const qsizetype start = lastPlace(buffer.chopped(least - prefix.size()), prefix);
    return start < 0 ? 0 : buffer.size() - start;
}

qsizetype ORSSerialPacketDescriptor::lengthByEvaluator(QByteArrayView buffer,
                                                       qsizetype leastLength) const
{
    for (qsizetype length = leastLength; length <= buffer.size(); ++length) {
        if (m_responseEvaluator(buffer.last(length)))
            return length;
    }
    return 0;
}
