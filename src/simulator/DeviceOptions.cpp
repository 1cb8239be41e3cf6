#include "simulator/DeviceOptions.h"

#include <QStringList>

#include <array>
#include <numeric>
#include <utility>

namespace vorn {

namespace {

constexpr int ConnectAnswerLength = 4;

template <typename Value>
using Word = std::pair<const char *, Value>;

constexpr std::array<Word<BootStep>, 9> Steps{{{"sync", BootStep::Sync},
                                               {"connect", BootStep::Connect},
                                               {"version", BootStep::Version},
                                               {"download", BootStep::Download},
                                               {"header", BootStep::Header},
                                               {"erase", BootStep::Erase},
                                               {"ready", BootStep::Ready},
                                               {"frame", BootStep::Frame},
                                               {"last", BootStep::Last}}};

constexpr std::array<Word<FaultKind>, 7> Kinds{{{"silence", FaultKind::Silence},
                                                {"refuse", FaultKind::Refuse},
                                                {"garbage", FaultKind::Garbage},
                                                {"noise", FaultKind::Noise},
                                                {"late", FaultKind::Late},
                                                {"duplicate", FaultKind::Duplicate},
                                                {"unplug", FaultKind::Unplug}}};

template <typename Value, std::size_t N>
std::optional<Value> valueOf(const QString &word, const std::array<Word<Value>, N> &words)
{
    for (const auto &[name, value] : words)
        if (word == QLatin1String(name))
            return value;
    return std::nullopt;
}

template <typename Value, std::size_t N>
QString choices(const std::array<Word<Value>, N> &words)
{
    QStringList names;
    for (const auto &[name, value] : words)
        names.append(QLatin1String(name));
    return names.join(QStringLiteral(", "));
}

std::optional<int> naturalNumber(const QString &text)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    return ok && number >= 0 ? std::optional(number) : std::nullopt;
}

QString faultProblem(const Fault &fault, int modelCode)
{
    if (fault.step == BootStep::Frame && fault.frame < 1)
        return QStringLiteral("a fault's frame number begins at 1");
    if (fault.step == BootStep::Erase && modelCode < 2)
        return QStringLiteral("the erase step exists from model code 2 on");
    if (fault.after < 0 || fault.times < 0 || fault.delay < std::chrono::milliseconds::zero())
        return QStringLiteral("a fault's numbers must not be negative");
    return {};
}

} // namespace

QString deviceOptionsProblem(const DeviceOptions &options)
{
    if (options.directory.isEmpty() != options.name.isEmpty())
        return QStringLiteral("a directory and a name belong together");
    if (options.name.contains(u'/') || options.name.contains(QChar(u'\0')) ||
        options.name == QLatin1String(".") || options.name == QLatin1String(".."))
        return QStringLiteral("\"%1\" cannot be a file's name").arg(options.name);
    if (options.modelCode < 0 || options.modelCode > 255)
        return QStringLiteral("a model code lies between 0 and 255");
    if (options.baud < 0)
        return QStringLiteral("a speed is not negative");
    if (options.flashSize < 1)
        return QStringLiteral("a flash has at least one byte");
    const auto zero = std::chrono::milliseconds::zero();
    if (options.eraseTime < zero || options.answerDelay < zero || options.pieceGap < zero ||
        options.resyncTime <= zero || options.replugAfter.value_or(zero) < zero)
        return QStringLiteral("a time is not negative");
    int pieces = 0;
    for (const int piece : options.connectPieces) {
        if (piece < 1 || piece > ConnectAnswerLength - pieces)
            return QStringLiteral("the connect answer has four bytes to be cut");
        pieces += piece;
    }
    for (const Fault &fault : options.faults)
        if (QString problem = faultProblem(fault, options.modelCode); !problem.isEmpty())
            return problem;
    return {};
}

std::optional<Fault> parseFault(const QString &text, QString *problem)
{
    const auto fail = [&](const QString &why) {
        *problem = QStringLiteral("\"%1\" is no fault: %2").arg(text, why);
        return std::nullopt;
    };
    QStringList parts = text.split(u',');
    const QString head = parts.takeFirst();
    const qsizetype equals = head.indexOf(u'=');
    if (equals < 0)
        return fail(QStringLiteral("it has the form STEP=KIND[,after=N][,times=N]"));

    Fault fault;
    const QStringList step = head.left(equals).split(u':');
    const std::optional<BootStep> where = valueOf(step.first(), Steps);
    if (!where)
        return fail(QStringLiteral("the steps are %1").arg(choices(Steps)));
    fault.step = *where;
    if ((fault.step == BootStep::Frame) != (step.size() == 2) || step.size() > 2)
        return fail(QStringLiteral("the step frame, and no other, takes a number: frame:3"));
    if (step.size() == 2) {
        fault.frame = naturalNumber(step.last()).value_or(0);
        if (fault.frame < 1)
            return fail(QStringLiteral("frames count from 1"));
    }

    const QStringList kind = head.mid(equals + 1).split(u':');
    const std::optional<FaultKind> what = valueOf(kind.first(), Kinds);
    if (!what)
        return fail(QStringLiteral("the kinds are %1").arg(choices(Kinds)));
    fault.kind = *what;
    if ((fault.kind == FaultKind::Late) != (kind.size() == 2) || kind.size() > 2)
        return fail(QStringLiteral("the kind late, and no other, takes milliseconds: late:500"));
    if (kind.size() == 2) {
        const std::optional<int> delay = naturalNumber(kind.last());
        if (!delay)
            return fail(QStringLiteral("late takes milliseconds: late:500"));
        fault.delay = std::chrono::milliseconds(*delay);
    }

    for (const QString &part : parts) {
        const QStringList pair = part.split(u'=');
        const std::optional<int> number =
            pair.size() == 2 ? naturalNumber(pair.last()) : std::nullopt;
        if (number && pair.first() == QLatin1String("after"))
            fault.after = *number;
        else if (number && pair.first() == QLatin1String("times"))
            fault.times = *number;
        else
            return fail(QStringLiteral("\"%1\" is neither after=N nor times=N").arg(part));
    }
    return fault;
}

} // namespace vorn
