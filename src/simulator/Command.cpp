#include "simulator/Command.h"

#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>

namespace vorn {

CommandLine::CommandLine(const QString &name, const QString &description, const QString &examples)
    : m_name(name), m_examples(examples)
{
    m_parser.setApplicationDescription(description);
    m_parser.addOption({{QStringLiteral("h"), QStringLiteral("help")},
                        QStringLiteral("Show this help and exit.")});
}

void CommandLine::addOption(const char *name, const char *description, const char *valueName)
{
    m_parser.addOption({QLatin1String(name), QLatin1String(description), QLatin1String(valueName)});
}

void CommandLine::addArgument(const char *name, const char *description)
{
    m_parser.addPositionalArgument(QLatin1String(name), QLatin1String(description));
    ++m_arguments;
}

bool CommandLine::parse(const QStringList &arguments)
{
    if (!m_parser.parse(QStringList{QStringLiteral("vornsim %1").arg(m_name)} + arguments)) {
        fail(m_parser.errorText());
        return true;
    }
    if (!isSet("help")) {
        const qsizetype given = m_parser.positionalArguments().size();
        if (given != m_arguments)
            fail(QStringLiteral("%1 arguments are needed, not %2").arg(m_arguments).arg(given));
        return true;
    }
    // The parser's own usage line would name the program without the subcommand.
    QString help = m_parser.helpText();
    help = QStringLiteral("Usage: vornsim %1 %2").arg(m_name, help.mid(help.indexOf(u"[options]")));
    std::fputs((help + u'\n' + m_examples).toLocal8Bit().constData(), stdout);
    return false;
}

bool CommandLine::isSet(const char *name) const
{
    return m_parser.isSet(QLatin1String(name));
}

QString CommandLine::text(const char *name) const
{
    return m_parser.value(QLatin1String(name));
}

QStringList CommandLine::texts(const char *name) const
{
    return m_parser.values(QLatin1String(name));
}

std::optional<QByteArray> CommandLine::bytes(const char *name) const
{
    return isSet(name) ? std::optional(text(name).toUtf8()) : std::nullopt;
}

QString CommandLine::argument() const
{
    return m_parser.positionalArguments().value(0);
}

qint64 CommandLine::number(const char *name, qint64 otherwise)
{
    if (!isSet(name))
        return otherwise;
    bool ok = false;
    const qint64 value = text(name).toLongLong(&ok);
    if (!ok || value < 0)
        fail(QStringLiteral("--%1: \"%2\" is no natural number")
                 .arg(QLatin1String(name), text(name)));
    return ok ? value : otherwise;
}

std::chrono::milliseconds CommandLine::milliseconds(const char *name,
                                                    std::chrono::milliseconds otherwise)
{
    constexpr qint64 aDay = qint64{24} * 3600 * 1000;
    const qint64 value = number(name, otherwise.count());
    if (value > aDay)
        fail(QStringLiteral("--%1: %2 ms are more than a day").arg(QLatin1String(name)).arg(value));
    return std::chrono::milliseconds(std::min(value, aDay));
}

void CommandLine::fail(const QString &problem)
{
    if (m_problem.isEmpty())
        m_problem = problem;
}

int CommandLine::complain() const
{
    printNote(m_problem);
    printNote(QStringLiteral("\"vornsim %1 --help\" shows what it takes").arg(m_name));
    return UsageError;
}

void printEvent(const char *event, QJsonObject members)
{
    members.insert(QStringLiteral("event"), QLatin1String(event));
    std::puts(QJsonDocument(members).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

void printNote(const QString &text)
{
    std::fputs(QStringLiteral("vornsim: %1\n").arg(text).toLocal8Bit().constData(), stderr);
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    printNote(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return false;
}

} // namespace vorn
