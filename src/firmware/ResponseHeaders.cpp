#include "firmware/ResponseHeaders.h"

#include "firmware/FirmwareFolder.h"

#include <QRegularExpression>

#include <algorithm>

namespace vorn {

namespace {

std::optional<QString> validUtf8(const QByteArray &bytes)
{
    if (!bytes.isValidUtf8())
        return std::nullopt;
    return QString::fromUtf8(bytes);
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

// The file name as it stands in the header; empty without one.
QString dispositionFilename(QByteArrayView contentDisposition)
{
    // A name, "=", and a quoted string, which may lack its end, or a token.
    static const QRegularExpression parameter(
        QStringLiteral(R"((?:^|;)\s*+([^;=\s]++)\s*+=\s*+(?:"((?:[^"\\]|\\.)*+)|([^;]*+)))"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression escape(QStringLiteral(R"(\\(.))"),
                                           QRegularExpression::DotMatchesEverythingOption);
    QString plain;
    QString extended;
    for (const auto &match : parameter.globalMatch(QString::fromLatin1(contentDisposition))) {
        const QString name = match.captured(1).toLower();
        const QByteArray value =
            match.hasCaptured(2)
                ? match.captured(2).replace(escape, QStringLiteral("\\1")).toLatin1()
                : match.captured(3).trimmed().toLatin1();
        if (name == u"filename" && plain.isEmpty())
            plain = validUtf8(value).value_or(QString::fromLatin1(value));
        else if (name == u"filename*" && extended.isEmpty())
            extended = extendedValue(value);
    }
    return extended.isEmpty() ? plain : extended;
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
