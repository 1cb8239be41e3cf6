#pragma once

#include <QByteArray>
#include <QString>

#include <iconv.h>

#include <memory>
#include <optional>
#include <type_traits>

namespace vorn {

struct EncodedEntryName
{
    QByteArray bytes;
    bool isUtf8 = false;
};

// Entry names between the bytes in an archive and text.
class EntryNameCodec
{
public:
    // `encoding` as iconv(3) names it. In one that it does not know, no name is valid.
    explicit EntryNameCodec(QByteArray encoding) : m_encoding(std::move(encoding)) {}

    // The text of a name. One that says it is UTF-8 (general purpose flag bit 11) is read so,
    // others in the encoding. What is not valid there is read as the other of the two when it is
    // valid in that, else byte by byte (each byte the character of its number): no name is ever
    // lost.
    QString decode(const QByteArray &name, bool isUtf8);
    // The bytes of a name: in the encoding, or in UTF-8 (to be flagged so) when it cannot say it.
    EncodedEntryName encode(const QString &name);

private:
    struct CloseConverter
    {
        void operator()(iconv_t converter) const { ::iconv_close(converter); }
    };
    using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, CloseConverter>;

    static Converter open(const char *from, const char *to);
    static std::optional<QByteArray> convert(const Converter &converter, QByteArray input);
    std::optional<QString> decodeInEncoding(const QByteArray &name);

    QByteArray m_encoding;
    // Opened when first needed, which takes longer than to convert a name.
    Converter m_decoder;
    Converter m_encoder;
};

} // namespace vorn
