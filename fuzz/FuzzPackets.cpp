// Packet descriptors over any stream: every packet that the matcher finds must be the one that the
// definition finds, which tries all tails of the newest bytes, the shortest first.
//
// The input: the kind of descriptor, options, the longest packet, the lengths of what describes the
// packet (a pattern, or prefix and suffix), that, and the stream.

#include "fuzz/Fuzzing.h"
#include "serial/PacketMatcher.h"

#include <QStringDecoder>

#include <functional>

namespace {

using vorn::require;
using Re = QRegularExpression;
using Descriptor = ORSSerialPacketDescriptor;
using Accepts = std::function<bool(const QByteArray &)>;

// Longer patterns and packets only find more ways to make the expression engine take its time.
constexpr int kLongestPattern = 32;
constexpr int kLongestPacket = 24;
constexpr qsizetype kLongestStream = 96;

void compare(const std::shared_ptr<const Descriptor> &descriptor, const Accepts &accepts,
             QByteArrayView stream)
{
    vorn::PacketMatcher matcher(descriptor);
    const auto longest = static_cast<qsizetype>(descriptor->maximumPacketLength());
    QByteArray newest;
    for (const char byte : stream) {
        newest = (newest + byte).right(longest);
        std::optional<QByteArray> wanted;
        for (qsizetype length = 1; length <= newest.size() && !wanted; ++length) {
            const QByteArray tail = newest.right(length);
            const bool isPacket = accepts(tail);
            require(isPacket == descriptor->dataIsValidPacket(tail));
            if (isPacket)
                wanted = tail;
        }
        require(descriptor->packetMatchingAtEndOfBuffer(newest) == wanted);
        require(matcher.append(byte) == wanted);
        require(matcher.buffer().data().size() <= longest);
        if (wanted)
            newest.clear();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    vorn::FuzzInput input(data, size);
    const int kind = input.byte() % 4;
    const int options = input.byte();
    const auto longest = static_cast<quint64>(input.byte() % (kLongestPacket + 1));
    const int firstLength = input.byte() % (kLongestPattern + 1);
    const int secondLength = input.byte() % (kLongestPattern + 1);
    const QByteArray first = input.bytes(firstLength).toByteArray();
    const auto stream = [&] { return input.bytes(kLongestStream); };

    if (kind == 0) {
        const Re expression(QString::fromUtf8(first),
                            static_cast<Re::PatternOptions>(options & 0x7F));
        const auto accepts = [&](const QByteArray &candidate) {
            QStringDecoder decoder(QStringDecoder::Utf8,
                                   QStringConverter::Flag::Stateless |
                                       QStringConverter::Flag::ConvertInitialBom);
            const QString text = decoder(candidate);
            return !decoder.hasError() && expression.isValid() &&
                   expression.match(text, 0, Re::NormalMatch, Re::AnchorAtOffsetMatchOption)
                       .hasMatch();
        };
        compare(std::make_shared<const Descriptor>(expression, longest), accepts, stream());
    } else if (kind == 1) {
        const QByteArray second = input.bytes(secondLength).toByteArray();
        Descriptor::PrefixSuffix ends;
        if (options & 1)
            ends.prefix = first;
        if (options & 2)
            ends.suffix = second;
        const auto accepts = [&](const QByteArray &candidate) {
            return (ends.prefix || ends.suffix) && candidate.startsWith(ends.prefix.value_or("")) &&
                   candidate.endsWith(ends.suffix.value_or(""));
        };
        compare(std::make_shared<const Descriptor>(ends, longest), accepts, stream());
    } else if (kind == 2) {
        compare(
            std::make_shared<const Descriptor>(first),
            [&](const QByteArray &candidate) { return candidate == first; }, stream());
    } else {
        // An evaluator of the caller's, here a length and a sum.
        const auto accepts = [&](QByteArrayView candidate) {
            int sum = 0;
            for (const char byte : candidate)
                sum += static_cast<std::uint8_t>(byte);
            return candidate.size() > firstLength && (sum & 7) == (options & 7);
        };
        compare(std::make_shared<const Descriptor>(longest, QVariant(), accepts), accepts,
                stream());
    }
    return 0;
}
