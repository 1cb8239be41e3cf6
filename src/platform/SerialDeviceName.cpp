#include "platform/SerialDeviceName.h"

#include <QStringView>

#include <algorithm>

namespace vorn {

namespace {

// Replaces every character that the predicate rejects with '_'.
template <typename Predicate>
QString replaceUnless(const QString &text, Predicate keeps)
{
    QString result;
    for (const char32_t character : text.toStdU32String())
        result += keeps(character) ? QString::fromUcs4(&character, 1) : QStringLiteral("_");
    return result;
}

} // namespace

SerialDeviceName splitSerialDeviceName(const QString &name)
{
    for (const auto prefix : {QStringView(u"usbserial-"), QStringView(u"usbmodem-")})
        if (name.startsWith(prefix))
            return {prefix.toString(), name.mid(prefix.size())};
    qsizetype split = name.lastIndexOf(u'-') + 1;
    if (split == 0) {
        const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
        split = std::distance(std::find_if_not(name.rbegin(), name.rend(), isDigit), name.rend());
    }
    return {name.left(split), name.mid(split)};
}

QString cleanSerialNumber(const QString &serialNumber)
{
    bool anyKept = false;
    QString cleaned = replaceUnless(serialNumber, [&](char32_t character) {
        const bool keeps =
            QChar::isLetterOrNumber(character) ||
            (character < 0x80 && QStringView(u"#+-.:=@_").contains(QChar(char16_t(character))));
        anyKept = anyKept || keeps;
        return keeps;
    });
    return anyKept ? cleaned : QString();
}

QString printableName(const QString &name)
{
    return replaceUnless(name, [](char32_t character) {
        return QChar::isPrint(character) && QChar::category(character) != QChar::Separator_Line &&
               QChar::category(character) != QChar::Separator_Paragraph;
    });
}

} // namespace vorn
