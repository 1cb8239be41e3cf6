#include "firmware/FirmwareModels.h"

#include <QRegularExpression>
#include <QVersionNumber>

#include <algorithm>
#include <tuple>

namespace vorn {
namespace {

// What files are ordered by: the version, then whether it is a final one, then the name.
auto rankOf(const QString &name)
{
    static const QRegularExpression version(QStringLiteral("(\\d+(?:\\.\\d+)*)(.*)\\.bin$"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = version.match(name);
    return std::tuple(QVersionNumber::fromString(match.captured(1)).normalized(),
                      match.captured(2).isEmpty(), name);
}

} // namespace

QString newestFirmware(const QStringList &files)
{
    const auto newest =
        std::max_element(files.begin(), files.end(),
                         [](const QString &a, const QString &b) { return rankOf(a) < rankOf(b); });
    return newest == files.end() ? QString() : *newest;
}

} // namespace vorn
