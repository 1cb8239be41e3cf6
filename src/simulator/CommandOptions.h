#pragma once

#include <QCommandLineParser>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <initializer_list>
#include <limits>
#include <optional>
#include <utility>

namespace vorn {

// The program's exit statuses.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

// The largest values of numeric options that have no limit of their own.
inline constexpr qint64 kAnyInt = std::numeric_limits<int>::max();
inline constexpr qint64 kAnyNumber = std::numeric_limits<qint64>::max();

// Thrown to end the program with a message.
struct CommandFailure
{
    int status;
    QString text;
};

// The subcommands. Each takes the arguments after its own name and returns an exit status.
int runDevice(const QStringList &arguments);
int runPackageServer(const QStringList &arguments);

// The command line of one subcommand. The getters throw a CommandFailure when a value is invalid.
class CommandOptions
{
public:
    struct Option
    {
        const char *name;
        const char *valueName; // null for a flag
        const char *description;
    };
    // `command` and `description` head the help text, `examples` end it.
    CommandOptions(const char *command, const char *description, const char *examples,
                   std::initializer_list<Option> options);

    // Parses the arguments. False when help was asked for and has been printed.
    bool parse(const QStringList &arguments);

    bool isSet(const char *name) const { return m_parser.isSet(QLatin1String(name)); }
    QString text(const char *name) const { return m_parser.value(QLatin1String(name)); }
    QStringList texts(const char *name) const { return m_parser.values(QLatin1String(name)); }
    std::optional<QByteArray> bytes(const char *name) const;
    qint64 number(const char *name, qint64 otherwise, qint64 max, qint64 min = 0) const;
    std::chrono::milliseconds milliseconds(const char *name,
                                           std::chrono::milliseconds otherwise) const;
    // The value that the option names; the first one when it is not given.
    template <typename Value, std::size_t N>
    Value choice(const char *name, const std::pair<const char *, Value> (&choices)[N]) const
    {
        QStringList names;
        for (const auto &[choice, value] : choices) {
            if (!isSet(name) || text(name) == QLatin1String(choice))
                return value;
            names.append(QLatin1String(choice));
        }
        fail(QStringLiteral("--%1: \"%2\" is not one of %3")
                 .arg(QLatin1String(name), text(name), names.join(QStringLiteral(", "))));
    }

    // Throws the message as a usage error.
    [[noreturn]] void fail(const QString &problem) const;

private:
    QString m_command;
    QString m_examples;
    QCommandLineParser m_parser;
};

// Prints one line of JSON to the standard output, with "event" as one of its members.
void printEvent(const char *event, QJsonObject members);
// Prints a message to the standard error output.
void printNote(const QString &text);
// Writes the file, completely or not at all. On failure prints a message and returns false.
bool writeFile(const QString &path, const QByteArray &bytes);
// Prints the report, and writes it to the file of --report. False when that fails.
bool giveReport(const CommandOptions &options, const QJsonObject &report);

} // namespace vorn
