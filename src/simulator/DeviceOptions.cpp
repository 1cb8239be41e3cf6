#include "simulator/DeviceOptions.h"

#include <QRegularExpression>
#include <QStringList>

namespace vorn {

namespace {

// In the order of the enumerators.
constexpr const char *kSteps =
    "sync, connect, version, download, header, frame, last, erase, ready";
constexpr const char *kKinds = "silence, refuse, garbage, noise, late, duplicate, unplug";

template <typename Enum>
std::optional<Enum> valueOf(const QString &word, const char *words)
{
    const qsizetype index = QString::fromLatin1(words).split(QStringLiteral(", ")).indexOf(word);
    return index < 0 ? std::nullopt : std::optional(static_cast<Enum>(index));
}

} // namespace

std::optional<Fault> parseFault(const QString &text, QString *problem)
{
    const auto fail = [&](const QString &why) {
        *problem = QStringLiteral("\"%1\" is not a fault: %2").arg(text, why);
        return std::nullopt;
    };
    static const QRegularExpression form(
        QStringLiteral("\\A([a-z]+)(:\\d{1,9})?=([a-z]+)(:\\d{1,9})?"
                       "((?:,(?:after|times)=\\d{1,9})*)\\z"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch())
        return fail(QStringLiteral("the form is STEP=KIND[,after=N][,times=N]"));

    const auto step = valueOf<BootStep>(match.captured(1), kSteps);
    if (!step)
        return fail(QStringLiteral("the steps are %1").arg(QLatin1String(kSteps)));
    const int frame = match.captured(2).mid(1).toInt();
    if ((*step == BootStep::Frame) != (frame > 0) || match.hasCaptured(2) != (frame > 0))
        return fail(QStringLiteral("the step frame, and no other, takes a number from 1 on"));
    const auto kind = valueOf<FaultKind>(match.captured(3), kKinds);
    if (!kind)
        return fail(QStringLiteral("the kinds are %1").arg(QLatin1String(kKinds)));
    if ((*kind == FaultKind::Late) != match.hasCaptured(4))
        return fail(QStringLiteral("the kind late, and no other, takes milliseconds"));

    Fault fault{*step, *kind, frame,
                0,     0,     std::chrono::milliseconds(match.captured(4).mid(1).toInt())};
    for (const QString &count : match.captured(5).split(u',', Qt::SkipEmptyParts))
        (count.startsWith(u"after") ? fault.after : fault.times) = count.section(u'=', 1).toInt();
    return fault;
}

} // namespace vorn
