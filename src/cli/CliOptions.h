#pragma once

#include "app/SharedOptions.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>

#include <optional>

namespace vorn {

enum class CliCommand { List, Info, Firmware, Download, Update, Watch };

// What the program was asked for.
struct CliOptions
{
    Q_DECLARE_TR_FUNCTIONS(CliOptions)
public:
    CommandLine common;
    bool json = false;
    bool verbose = false;
    double timeoutScale = 1; // of every limit for the device's answers

    CliCommand command = CliCommand::List;
    QStringList devices; // names or nodes
    bool all = false;
    std::optional<qint32> model;
    QString imagePath; // null: the newest
    bool force = false;
    int retries = 0;
    QString recordPath; // null: none
};

// Reads the arguments. Nothing when the program is to end at once with `exitCode`, after help, the
// version or a message was printed.
std::optional<CliOptions> readCliOptions(const QStringList &arguments, int &exitCode);

// "vornupdater-cli 1.0.0"
QString versionLine();

} // namespace vorn
