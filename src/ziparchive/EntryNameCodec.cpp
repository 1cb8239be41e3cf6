#include "ziparchive/EntryNameCodec.h"

#include <array>
#include <cerrno>
#include <cstdint>

namespace vorn {

namespace {

constexpr auto kFailed = static_cast<std::size_t>(-1);

std::optional<QString> decodeUtf8(const QByteArray &name)
{
    if (!QByteArrayView(name).isValidUtf8())
        return std::nullopt;
    return QString::fromUtf8(name);
}

} // namespace

EntryNameCodec::Converter EntryNameCodec::open(const char *from, const char *to)
{
    const iconv_t converter = ::iconv_open(to, from);
    // Its error value is an integer by definition.
    return Converter(reinterpret_cast<std::intptr_t>(converter) == -1 ? nullptr : converter);
}

// Nothing when a character is invalid in the one encoding or missing in the other.
std::optional<QByteArray> EntryNameCodec::convert(const Converter &converter, QByteArray input)
{
    if (!converter)
        return std::nullopt;
    ::iconv(converter.get(), nullptr, nullptr, nullptr, nullptr);
    QByteArray result;
    std::array<char, 256> buffer = {};
    char *in = input.data();
    auto inLeft = static_cast<std::size_t>(input.size());
    // The last call, without input, writes the final shift sequence of stateful encodings.
    for (bool isEnding = false;;) {
        char *out = buffer.data();
        std::size_t outLeft = buffer.size();
        const std::size_t changed =
            ::iconv(converter.get(), isEnding ? nullptr : &in, &inLeft, &out, &outLeft);
        const bool isFull = changed == kFailed && errno == E2BIG;
        if (changed != 0 && !isFull)
            return std::nullopt;
        result.append(buffer.data(), static_cast<qsizetype>(buffer.size() - outLeft));
        if (isFull)
            continue;
        if (isEnding)
            return result;
        isEnding = true;
    }
}

std::optional<QString> EntryNameCodec::decodeInEncoding(const QByteArray &name)
{
    if (!m_decoder)
        m_decoder = open(m_encoding.constData(), "UTF-8");
    const auto utf8 = convert(m_decoder, name);
    if (!utf8)
        return std::nullopt;
    return QString::fromUtf8(*utf8);
}

QString EntryNameCodec::decode(const QByteArray &name, bool isUtf8)
{
    auto text = isUtf8 ? decodeUtf8(name) : decodeInEncoding(name);
    if (!text)
        text = isUtf8 ? decodeInEncoding(name) : decodeUtf8(name);
    return text ? *text : QString::fromLatin1(name);
}

EncodedEntryName EntryNameCodec::encode(const QString &name)
{
    const QByteArray utf8 = name.toUtf8();
    if (!m_encoder)
        m_encoder = open("UTF-8", m_encoding.constData());
    if (auto bytes = convert(m_encoder, utf8))
        return {.bytes = std::move(*bytes), .isUtf8 = false};
    return {.bytes = utf8, .isUtf8 = true};
}

} // namespace vorn
