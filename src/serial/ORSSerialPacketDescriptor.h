#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QRegularExpression>
#include <QString>
#include <QUuid>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>

class ORSSerialPacketDescriptor;
// Descriptors are shared by those who listen for the same packets.
using ORSSerialPacketDescriptorPtr = std::shared_ptr<const ORSSerialPacketDescriptor>;

namespace vorn {
class PacketExpression;
class PacketMatcher;
} // namespace vorn

// Describes a complete packet: exact bytes, a prefix and suffix, a regular expression, or a test by
// the caller. Immutable, so any thread may use it (an evaluator runs on the calling thread).
//
// A descriptor equals only itself: two made from the same arguments differ.
class ORSSerialPacketDescriptor
{
public:
    using Evaluator = std::function<bool(QByteArrayView data)>;

    // The ends of a packet. One that is absent is not checked; without both nothing matches. They
    // may overlap in a short packet: "AB" and "BC" accept "ABC".
    struct PrefixSuffix
    {
        std::optional<QByteArray> prefix;
        std::optional<QByteArray> suffix;
    };
    // The same as text, encoded in UTF-8.
    struct PrefixSuffixStrings
    {
        std::optional<QString> prefixString;
        std::optional<QString> suffixString;
    };

    // There is no packet without a description of it.
    ORSSerialPacketDescriptor() = delete;

    // maximumPacketLength is the capacity in bytes of the buffer that a port keeps for the
    // descriptor: longer packets are not found. userInfo is a tag for the caller's own use.

    // Packets that the evaluator accepts; without one, any that are not empty.
    ORSSerialPacketDescriptor(quint64 maximumPacketLength, QVariant userInfo,
                              Evaluator responseEvaluator);
    // Exactly these bytes; their number is the maximum length.
    explicit ORSSerialPacketDescriptor(const QByteArray &packetData, QVariant userInfo = {});
    ORSSerialPacketDescriptor(const PrefixSuffix &ends, quint64 maximumPacketLength,
                              QVariant userInfo = {});
    ORSSerialPacketDescriptor(const PrefixSuffixStrings &ends, quint64 maximumPacketLength,
                              QVariant userInfo = {});
    // UTF-8 text at whose start the expression matches, whatever follows the match. An invalid
    // expression matches nothing.
    ORSSerialPacketDescriptor(const QRegularExpression &regularExpression,
                              quint64 maximumPacketLength, QVariant userInfo = {});
    ~ORSSerialPacketDescriptor();
    ORSSerialPacketDescriptor(const ORSSerialPacketDescriptor &) = delete;
    ORSSerialPacketDescriptor &operator=(const ORSSerialPacketDescriptor &) = delete;

    // What the descriptor was made from; empty for other kinds of descriptor.
    const std::optional<QByteArray> &packetData() const { return m_packetData; }
    const std::optional<QByteArray> &prefix() const { return m_ends.prefix; }
    const std::optional<QByteArray> &suffix() const { return m_ends.suffix; }
    std::optional<QRegularExpression> regularExpression() const;

    quint64 maximumPacketLength() const { return m_maximumPacketLength; }
    const QVariant &userInfo() const { return m_userInfo; }
    const QUuid &uuid() const { return m_uuid; }
    // The test for a packet, for every kind of descriptor.
    const Evaluator &responseEvaluator() const { return m_responseEvaluator; }

    bool dataIsValidPacket(QByteArrayView packet) const { return m_responseEvaluator(packet); }

    // The shortest packet at the end of the buffer. With a regular expression this takes longer for
    // a longer buffer; a port that listens finds the same packets faster.
    std::optional<QByteArray> packetMatchingAtEndOfBuffer(QByteArrayView buffer) const;

    friend bool operator==(const ORSSerialPacketDescriptor &a, const ORSSerialPacketDescriptor &b)
    {
        return a.m_uuid == b.m_uuid;
    }
    friend size_t qHash(const ORSSerialPacketDescriptor &descriptor, size_t seed = 0)
    {
        return qHash(descriptor.m_uuid, seed);
    }

private:
    friend class vorn::PacketMatcher;
    qsizetype lengthOfPacketAtEnd(QByteArrayView buffer, qsizetype leastLength) const;
    qsizetype lengthByPrefixAndSuffix(QByteArrayView buffer, qsizetype leastLength) const;
    qsizetype lengthByEvaluator(QByteArrayView buffer, qsizetype leastLength) const;

    const std::optional<QByteArray> m_packetData;
    const PrefixSuffix m_ends;
    const std::shared_ptr<const vorn::PacketExpression> m_expression;
    const quint64 m_maximumPacketLength;
    const QVariant m_userInfo;
    const QUuid m_uuid = QUuid::createUuid();
    const Evaluator m_responseEvaluator;
};
