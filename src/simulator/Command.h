#pragma once

#include <QCommandLineParser>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace vorn {

// The program's exit statuses.
enum ExitStatus : int { Success = 0, Failure = 1, UsageError = 2 };

// The program's subcommands. Each takes the arguments behind its own name.
int runDevice(const QStringList &arguments);
int runPackageServer(const QStringList &arguments);
int runSampleFirmware(const QStringList &arguments);
int runSamplePackage(const QStringList &arguments);

// The reading of one subcommand's options. The first thing that is wrong is kept and ends it; the
// getters answer their defaults from then on.
class CommandLine
{
public:
    // `name` and `description` head the help, `examples` end it.
    CommandLine(const QString &name, const QString &description, const QString &examples);

    void addOption(const char *name, const char *description, const char *valueName = nullptr);
    void addArgument(const char *name, const char *description);

    // Reads the arguments. False when there is nothing more to do: help was asked for and shown.
    bool parse(const QStringList &arguments);

    bool isSet(const char *name) const;
    QString text(const char *name) const; // empty when not given
    QStringList texts(const char *name) const;
    std::optional<QByteArray> bytes(const char *name) const;
    QString argument() const; // the first positional argument
    qint64 number(const char *name, qint64 otherwise);
    std::chrono::milliseconds milliseconds(const char *name, std::chrono::milliseconds otherwise);

    void fail(const QString &problem);
    bool failed() const { return !m_problem.isEmpty(); }
    // Tells the problem on the standard error output; the exit status for it.
    int complain() const;

private:
    QString m_name;
    QString m_examples;
    QCommandLineParser m_parser;
    int m_arguments = 0; // positional ones that are needed
    QString m_problem;
};

// One line of JSON on the standard output, with "event" among its members, written at once.
void printEvent(const char *event, QJsonObject members);
// A line for a person on the standard error output.
void printNote(const QString &text);
// Writes the file whole or not at all. False after a note of what went wrong.
bool writeFile(const QString &path, const QByteArray &bytes);

} // namespace vorn
