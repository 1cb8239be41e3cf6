#include "cli/CliOptions.h"

#include "cli/Output.h"

#include <QCommandLineParser>

#include <algorithm>
#include <iterator>

namespace vorn {
namespace {

constexpr double kLongestScale = 1000; // the limits stay within a day
constexpr int kMostRetries = 100;

// What is wrong with the command line, in words for a person.
struct UsageError
{
    QString text;
};

struct CommandRow
{
    CliCommand command;
    const char *name;
    const char *synopsis;
    const char *summary;
};

constexpr CommandRow kCommands[] = {
    {CliCommand::List, "list", "",
     QT_TRANSLATE_NOOP("CliOptions",
                       "List the serial devices: name, node, adapter's maker and serial number.")},
    {CliCommand::Info, "info", "[--all] [DEVICE…]",
     QT_TRANSLATE_NOOP("CliOptions", "Ask devices for their model code.")},
    {CliCommand::Firmware, "firmware", "[--model N]",
     QT_TRANSLATE_NOOP("CliOptions", "List the files of the firmware folder.")},
    {CliCommand::Download, "download", "",
     QT_TRANSLATE_NOOP("CliOptions", "Fetch the latest firmware package, unless it is the one that "
                                     "was fetched last.")},
    {CliCommand::Update, "update",
     "(--firmware FILE | --newest) [--all] [--force] [--retries N] [DEVICE…]",
     QT_TRANSLATE_NOOP("CliOptions", "Update devices, side by side.")},
    {CliCommand::Watch, "watch",
     "(--firmware FILE | --newest) [--force] [--retries N] [--record FILE]",
     QT_TRANSLATE_NOOP("CliOptions", "Update each device that is plugged in, until Ctrl-C.")},
};

QString tr(const CommandRow &row)
{
    return QCoreApplication::translate("CliOptions", row.summary);
}

QString listOfCommands()
{
    QString text = u'\n' + CliOptions::tr("Commands:") + u'\n';
    for (const CommandRow &row : kCommands) {
        const QString words = QString::fromUtf8(row.name) + u' ' + QString::fromUtf8(row.synopsis);
        text += QStringLiteral("  %1\n      %2\n").arg(words.trimmed(), tr(row));
    }
    return text + u'\n' +
           CliOptions::tr("“%1 COMMAND --help” describes a command's options.")
               .arg(QStringLiteral("vornupdater-cli")) +
           u'\n';
}

// The options behind the command. Which of them a command takes, its row says.
class CommandParser
{
public:
    explicit CommandParser(const CommandRow &row) : m_row(row)
    {
        m_parser.setApplicationDescription(tr(row));
        const QCommandLineOption *const options[] = {&m_all,   &m_model,   &m_firmware, &m_newest,
                                                     &m_force, &m_retries, &m_record};
        m_parser.addOption(m_help);
        for (const QCommandLineOption *option : options)
            if (takes(QStringLiteral("--") + option->names().constFirst()))
                m_parser.addOption(*option);
        m_parser.addPositionalArgument(QLatin1StringView(row.name), {},
                                       QLatin1StringView(row.name));
        if (takes(QStringLiteral("DEVICE")))
            m_parser.addPositionalArgument(
                QStringLiteral("device"),
                CliOptions::tr("A device's name or node; without one, the only device there is."),
                QStringLiteral("[DEVICE…]"));
    }

    // Sets the options; null, or the help that was asked for.
    QString read(const QStringList &arguments, CliOptions &wishes)
    {
        if (!m_parser.parse(arguments))
            throw UsageError{m_parser.errorText()};
        if (m_parser.isSet(m_help))
            return m_parser.helpText();
        wishes.devices = m_parser.positionalArguments().mid(1);
        if (!wishes.devices.isEmpty() && !takes(QStringLiteral("DEVICE")))
            throw UsageError{
                CommandLine::tr("Unexpected argument: %1").arg(wishes.devices.constFirst())};
        wishes.all = isSet(m_all);
        if (wishes.all && !wishes.devices.isEmpty())
            throw UsageError{CliOptions::tr("Name devices or give --all, not both.")};
        wishes.force = isSet(m_force);
        if (isSet(m_model))
            wishes.model = numberOf(m_model, 255);
        if (isSet(m_retries))
            wishes.retries = numberOf(m_retries, kMostRetries);
        if (isSet(m_record))
            wishes.recordPath = m_parser.value(m_record);
        if (takes(QStringLiteral("--newest"))) {
            if (isSet(m_firmware) == isSet(m_newest))
                throw UsageError{CliOptions::tr("Give either --firmware FILE or --newest.")};
            if (isSet(m_firmware))
                wishes.imagePath = m_parser.value(m_firmware);
        }
        return {};
    }

private:
    bool takes(const QString &option) const
    {
        return QString::fromUtf8(m_row.synopsis).contains(option);
    }
    bool isSet(const QCommandLineOption &option) const
    {
        return takes(QStringLiteral("--") + option.names().constFirst()) && m_parser.isSet(option);
    }
    int numberOf(const QCommandLineOption &option, int most) const
    {
        bool isNumber = false;
        const int number = m_parser.value(option).toInt(&isNumber);
        if (!isNumber || number < 0 || number > most)
            throw UsageError{CliOptions::tr("--%1 takes a number from 0 to %2.")
                                 .arg(option.names().constFirst())
                                 .arg(most)};
        return number;
    }

    const CommandRow &m_row;
    QCommandLineParser m_parser;
    const QCommandLineOption m_help{{QStringLiteral("h"), QStringLiteral("help")},
                                    CommandLine::tr("Show this help and exit.")};
    const QCommandLineOption m_all{QStringLiteral("all"),
                                   CliOptions::tr("Take every USB-serial adapter.")};
    const QCommandLineOption m_model{QStringLiteral("model"),
                                     CliOptions::tr("Only the files for the model code N."),
                                     QStringLiteral("N")};
    const QCommandLineOption m_firmware{QStringLiteral("firmware"),
                                        CliOptions::tr("Update with this file."),
                                        QStringLiteral("FILE")};
    const QCommandLineOption m_newest{
        QStringLiteral("newest"),
        CliOptions::tr("Update with the file in the firmware folder that has the highest version "
                       "in its name for the device's model.")};
    const QCommandLineOption m_force{
        QStringLiteral("force"),
        CliOptions::tr("Accept a file whose name says another model than the device's.")};
    const QCommandLineOption m_retries{
        QStringLiteral("retries"),
        CliOptions::tr("Begin a failed update again, up to N times (0)."), QStringLiteral("N")};
    const QCommandLineOption m_record{QStringLiteral("record"),
                                      CliOptions::tr("Append a JSON line for each update to FILE."),
                                      QStringLiteral("FILE")};
};

double scaleOf(const QString &text)
{
    bool isNumber = false;
    const double scale = text.toDouble(&isNumber);
    if (!isNumber || !(scale > 0) || scale > kLongestScale)
        throw UsageError{
            CliOptions::tr("--timeout-scale takes a number above 0, up to %1.").arg(kLongestScale)};
    return scale;
}

// The text to print instead of running a command; null otherwise.
QString read(const QStringList &arguments, CliOptions &wishes)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        CliOptions::tr("Updates devices' firmware over their USB-serial links, and fetches "
                       "firmware packages. Options come before the command."));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    const SharedOptions shared(parser);
    const QCommandLineOption json(
        QStringLiteral("json"),
        CliOptions::tr("Write a JSON object a line instead of text to standard output."));
    const QCommandLineOption verbose(
        QStringLiteral("verbose"), CliOptions::tr("Tell each step, and what the system reports."));
    const QCommandLineOption timeoutScale(
        QStringLiteral("timeout-scale"),
        CliOptions::tr("Wait X times as long as usual for a slow device's answers."),
        QStringLiteral("X"), QStringLiteral("1"));
    parser.addOptions({json, verbose, timeoutScale});
    parser.addPositionalArgument(QStringLiteral("command"),
                                 CliOptions::tr("What to do; see below."),
                                 QStringLiteral("COMMAND"));

    if (!parser.parse(arguments))
        throw UsageError{parser.errorText()};
    if (shared.isHelpWanted())
        return parser.helpText() + listOfCommands();
    if (shared.isVersionWanted())
        return versionLine();
    wishes.json = parser.isSet(json);
    wishes.verbose = parser.isSet(verbose);
    wishes.timeoutScale = scaleOf(parser.value(timeoutScale));
    if (const QString problem = shared.read(wishes.common); !problem.isEmpty())
        throw UsageError{problem};

    const QStringList words = parser.positionalArguments();
    if (words.isEmpty())
        throw UsageError{CliOptions::tr("No command was given.")};
    const auto row =
        std::find_if(std::begin(kCommands), std::end(kCommands), [&](const CommandRow &each) {
            return words.constFirst() == QLatin1StringView(each.name);
        });
    if (row == std::end(kCommands))
        throw UsageError{CliOptions::tr("Unknown command: %1").arg(words.constFirst())};
    wishes.command = row->command;
    return CommandParser(*row).read(arguments.first(1) + words, wishes);
}

} // namespace

std::optional<CliOptions> readCliOptions(const QStringList &arguments, int &exitCode)
{
    CliOptions wishes;
    try {
        const QString text = read(arguments, wishes);
        if (text.isEmpty())
            return wishes;
        exitCode = exitCodeAfterOutput(kDone, print(stdout, text));
    } catch (const UsageError &error) {
        print(stderr, error.text + u'\n' + CommandLine::tr("Try --help.") + u'\n');
        exitCode = kUsage;
    }
    return std::nullopt;
}

QString versionLine()
{
    return QStringLiteral("vornupdater-cli %1\n").arg(QCoreApplication::applicationVersion());
}

} // namespace vorn
