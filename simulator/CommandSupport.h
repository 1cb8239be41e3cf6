#pragma once

#include <QCommandLineParser>
#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace vorn {

inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;

// Prints the problem, and where help is to be had, to the standard error; kExitUsage.
int complainAboutUsage(const QString &problem);
// Prints the problem to the standard error; kExitFailure.
int complain(const QString &problem);

// Parses; when there was a mistake or help was asked for, the exit code.
std::optional<int> parse(QCommandLineParser &parser, const QStringList &arguments);

// An option's whole number between the two bounds; nothing, with a problem, when it is none.
std::optional<qint64> number(const QCommandLineParser &parser, const QString &option, qint64 least,
                             qint64 most, QString &problem);

// Prints one line of JSON to the standard output at once.
void printLine(const QJsonObject &object);
// Writes indented JSON to the file, or to the standard output for an empty name. False, with the
// problem, when it cannot be written.
bool writeJson(const QJsonObject &object, const QString &file, QString &problem);

// Runs the event loop until SIGINT, SIGTERM or SIGHUP, which main() has blocked, or until
// quit(), asked every few milliseconds, is true.
void runUntilInterrupted(const std::function<bool()> &quit);
// Blocks those signals in this thread and all that it starts.
void blockInterruptions();

} // namespace vorn
