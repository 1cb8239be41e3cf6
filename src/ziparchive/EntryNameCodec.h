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

// Converts entry names between text and the bytes in an archive.
class EntryNameCodec
{
public:
    // `encoding` as iconv(3) calls it. In an unknown encoding no name is valid.
    explicit EntryNameCodec(QByteArray encoding) : m_encoding(std::move(encoding)) {}

    // Reads a name that is flagged as UTF-8 (general purpose flag bit 11) as UTF-8, any other in
    // the encoding. A name that is not valid there is read as the other of the two, or else as
    // ISO 8859-1, so that no name is lost.
    QString decode(const QByteArray &name, bool isUtf8);
    // In the encoding, or in UTF-8 (to be flagged so) when the encoding cannot represent the name.
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
    // Opened on first use: opening takes longer than converting a name.
    Converter m_decoder;
    Converter m_encoder;
};

} // namespace vorn
