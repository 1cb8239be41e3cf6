#pragma once

#include "firmware/PackageLocation.h"

#include <QCommandLineOption>
#include <QCoreApplication>
#include <QString>

#include <cstdio>

class QCommandLineParser;

namespace vorn {

// What every front end can be asked for on its command line.
struct CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
public:
    QString deviceDirectory;  // empty: the system's devices only
    PackageLocation packages; // not configured without a package server
};

// The options behind that, besides --help and --version.
class SharedOptions
{
public:
    // Adds the options to the parser, which must outlive the object.
    explicit SharedOptions(QCommandLineParser &parser);

    // After the parser has parsed.
    bool isHelpWanted() const;
    bool isVersionWanted() const;
    // Sets `wishes`. Returns what is wrong with the options, in words for a person; empty when
    // nothing is.
    QString read(CommandLine &wishes) const;

private:
    QCommandLineParser &m_parser;
    const QCommandLineOption m_help;
    const QCommandLineOption m_version;
    const QCommandLineOption m_deviceDirectory;
    const QCommandLineOption m_packageHost;
    const QCommandLineOption m_packageCa;
};

// Makes the entries of the directory serial devices, besides the system's. No effect for an empty
// path. Before the first use of the device registry. Returns why changes of the directory will go
// unnoticed, in words for a person; empty when they will not.
QString installDeviceRegistry(const QString &deviceDirectory);

// Creates the queues; the main queue belongs to this thread, which has the application. False, with
// the reason on standard error, when the system refuses what they need.
bool startQueues();

// Writes the text in the locale's encoding. Returns 0 or an errno.
int print(FILE *stream, const QString &text);

} // namespace vorn
