#include "simulator/CommandOptions.h"

#include <QJsonDocument>
#include <QSaveFile>

#include <cstdio>

namespace vorn {

CommandOptions::CommandOptions(const char *command, const char *description, const char *examples,
                               std::initializer_list<Option> options)
    : m_command(QLatin1String(command)), m_examples(QLatin1String(examples))
{
    m_parser.setApplicationDescription(QLatin1String(description));
    m_parser.addOption({{QStringLiteral("h"), QStringLiteral("help")},
                        QStringLiteral("Show this help and exit.")});
    for (const Option &option : options)
        m_parser.addOption({QLatin1String(option.name), QLatin1String(option.description),
                            QLatin1String(option.valueName)});
}

bool CommandOptions::parse(const QStringList &arguments)
{
    if (!m_parser.parse(QStringList{QStringLiteral("vornsim ") + m_command} + arguments))
        fail(m_parser.errorText());
    if (isSet("help")) {
        // The parser's own usage line would name the program without the subcommand.
        const QString help = m_parser.helpText();
        std::fputs(QStringLiteral("Usage: vornsim %1 %2\n%3")
                       .arg(m_command, help.mid(help.indexOf(u"[options]")), m_examples)
                       .toLocal8Bit()
                       .constData(),
                   stdout);
        return false;
    }
    for (const QString &argument : m_parser.positionalArguments())
        fail(QStringLiteral("\"%1\" is not an option").arg(argument));
    return true;
}

std::optional<QByteArray> CommandOptions::bytes(const char *name) const
{
    return isSet(name) ? std::optional(text(name).toUtf8()) : std::nullopt;
}

qint64 CommandOptions::number(const char *name, qint64 otherwise, qint64 max, qint64 min) const
{
    if (!isSet(name))
        return otherwise;
    bool ok = false;
    const qint64 value = text(name).toLongLong(&ok);
    if (!ok || value < min || value > max)
        fail(QStringLiteral("--%1: \"%2\" is not a number from %3 to %4")
                 .arg(QLatin1String(name), text(name))
                 .arg(min)
                 .arg(max));
    return value;
}

std::chrono::milliseconds CommandOptions::milliseconds(const char *name,
                                                       std::chrono::milliseconds otherwise) const
{
    constexpr std::chrono::milliseconds kDay = std::chrono::hours(24);
    return std::chrono::milliseconds(number(name, otherwise.count(), kDay.count()));
}

void CommandOptions::fail(const QString &problem) const
{
    throw CommandFailure{
        kExitUsage,
        QStringLiteral("%1\n\"vornsim %2 --help\" lists the options").arg(problem, m_command)};
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

bool giveReport(const CommandOptions &options, const QJsonObject &report)
{
    const bool written = !options.isSet("report") ||
                         writeFile(options.text("report"), QJsonDocument(report).toJson());
    printEvent("report", report);
    return written;
}

} // namespace vorn
