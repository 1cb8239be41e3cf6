#include "app/CommandLine.h"

#include <QCommandLineParser>

namespace vorn {
namespace {

constexpr int kUsageError = 2;

} // namespace

std::optional<CommandLine> readCommandLine(const QStringList &arguments, int &exitCode)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(CommandLine::tr(
        "Updates a device's firmware over its USB-serial link, and fetches firmware "
        "packages."));
    const SharedOptions options(parser);

    const bool parsed = parser.parse(arguments);
    exitCode = 0;
    if (parsed && options.isHelpWanted()) {
        print(stdout, parser.helpText());
        return std::nullopt;
    }
    if (parsed && options.isVersionWanted()) {
        print(stdout, QCoreApplication::applicationName() + u' ' +
                          QCoreApplication::applicationVersion() + u'\n');
        return std::nullopt;
    }

    CommandLine wishes;
    QString problem;
    if (!parsed)
        problem = parser.errorText();
    else if (!parser.positionalArguments().isEmpty())
        problem = CommandLine::tr("Unexpected argument: %1")
                      .arg(parser.positionalArguments().constFirst());
    else
        problem = options.read(wishes);
    if (problem.isEmpty())
        return wishes;
    print(stderr, problem + u'\n' + CommandLine::tr("Try --help.") + u'\n');
    exitCode = kUsageError;
    return std::nullopt;
}

} // namespace vorn
