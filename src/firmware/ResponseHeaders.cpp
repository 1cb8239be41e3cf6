#include "firmware/ResponseHeaders.h"

#include "firmware/FirmwareFolder.h"

#include <QStringDecoder>

#include <algorithm>

namespace vorn {

namespace {

// Parses the value of "Content-Disposition" from front to back.
class DispositionReader
{
public:
    explicit DispositionReader(QByteArrayView value) : m_rest(value) {}

    bool atEnd() const { return m_rest.isEmpty(); }

    // What precedes the next ";", "=" or the end, trimmed.
    QByteArray word()
    {
        return take([](char c) { return c == ';' || c == '='; }).trimmed();
    }

    bool skip(char wanted)
    {
        if (m_rest.isEmpty() || m_rest.front() != wanted)
            return false;
        m_rest = m_rest.sliced(1);
        return true;
    }

    // A parameter's value: a quoted string, unquoted and unescaped, or a token.
    QByteArray value()
    {
        while (skip(' ') || skip('\t')) {
        }
        if (!skip('"'))
            return take([](char c) { return c == ';'; }).trimmed();
        QByteArray unquoted;
        while (!m_rest.isEmpty() && !skip('"')) {
            skip('\\');
            if (m_rest.isEmpty())
                break;
            unquoted.append(m_rest.front());
            m_rest = m_rest.sliced(1);
        }
        take([](char c) { return c == ';'; });
        return unquoted;
    }

private:
    template <typename IsEnd>
    QByteArray take(IsEnd isEnd)
    {
        const auto end = std::find_if(m_rest.begin(), m_rest.end(), isEnd);
        const QByteArrayView taken(m_rest.begin(), end);
        m_rest = m_rest.sliced(taken.size());
        return taken.toByteArray();
    }

    QByteArrayView m_rest;
};

std::optional<QString> validUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

// An extended value, charset'language'percent-encoded (RFC 8187); empty when it cannot be decoded.
QString extendedValue(const QByteArray &value)
{
    const qsizetype charsetEnd = value.indexOf('\'');
    const qsizetype languageEnd = charsetEnd < 0 ? -1 : value.indexOf('\'', charsetEnd + 1);
    if (languageEnd < 0)
        return {};
    const QByteArray charset = value.first(charsetEnd).toLower();
    const QByteArray bytes = QByteArray::fromPercentEncoding(value.sliced(languageEnd + 1));
    if (charset == "utf-8")
        return validUtf8(bytes).value_or(QString());
    if (charset == "iso-8859-1")
        return QString::fromLatin1(bytes);
    return {};
}

bool isControl(QChar c)
{
    return c.unicode() < 0x20 || c.unicode() == 0x7f;
}

} // namespace

qint64 expectedLength(QByteArrayView contentLength)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const QByteArrayView digits = contentLength.trimmed();
    if (!std::all_of(digits.begin(), digits.end(), isDigit))
        return 0;
    return digits.toByteArray().toLongLong(); // 0 when it is empty or does not fit
}

std::optional<QString> lastModifiedValue(const QByteArray &lastModified)
{
    if (lastModified.isNull())
        return std::nullopt;
    return QString::fromLatin1(lastModified);
}

QString dispositionFilename(QByteArrayView contentDisposition)
{
    QString plain;
    QString extended;
    DispositionReader reader(contentDisposition);
    while (!reader.atEnd()) {
        const QByteArray name = reader.word().toLower();
        if (reader.skip('=')) {
            const QByteArray value = reader.value();
            if (name == "filename" && plain.isEmpty())
                plain = validUtf8(value).value_or(QString::fromLatin1(value));
            else if (name == "filename*" && extended.isEmpty())
                extended = extendedValue(value);
        }
        reader.skip(';');
    }
    return extended.isEmpty() ? plain : extended;
}

QString suggestedFilename(const UrlResponse &response)
{
    QString name = dispositionFilename(response.contentDisposition);
    if (name.isEmpty())
        name = response.url.fileName(QUrl::FullyDecoded);
    const qsizetype separator = std::max(name.lastIndexOf(u'/'), name.lastIndexOf(u'\\'));
    return name.sliced(separator + 1);
}

QString folderNameFor(const QString &filename)
{
    const QString folder = filename.section(u'.', 0, 0);
    // An archive saved under the firmware folder's own name would take that folder's place.
    const bool isName = !folder.trimmed().isEmpty() && !folder.contains(u'/') &&
                        filename != kFirmwareFolderName &&
                        std::none_of(filename.begin(), filename.end(), isControl);
    return isName ? folder : QString();
}

} // namespace vorn
