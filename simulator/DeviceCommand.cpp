#include "simulator/DeviceCommand.h"

#include "simulator/CommandSupport.h"
#include "simulator/SimulatedDevice.h"

#include <QFile>

namespace vorn {
namespace {

const QString kDescription = QStringLiteral(
    "A simulated device: a boot loader on a pseudo-terminal. Prints a line of JSON with its path "
    "when "
    "it is plugged in, and a report (image hash, frames, errors, times) when it ends.\n\n"
    "Examples:\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1 --erase-ms 500 --baud 2000000\n"
    "  vornsim device --dir /tmp/devices --name usbserial-1 --fault frame:3=unplug,times=1 "
    "--replug-ms 2000");

constexpr qint64 kLongestMs = 3600 * 1000;

void addOptions(QCommandLineParser &parser)
{
    const auto option = [&](const char *name, const char *description, const char *value,
                            const char *standard = "") {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(description),
                          QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    option("dir", "link the terminal into this directory", "DIR");
    option("name", "the link's name", "NAME");
    option("model", "model code, 0 to 255; from 2 on the flash is erased", "N", "8");
    option("erase-ms", "how long an erase takes", "MS", "0");
    option("answer-delay-ms", "wait before each answer", "MS", "0");
    option("baud", "pace the line at this speed; 0: as fast as it goes", "N", "0");
    option("split", "send the connect answer in pieces of these lengths", "N,N,...");
    option("split-gap-ms", "between two such pieces", "MS", "5");
    parser.addOption({QStringLiteral("join-erase-answers"),
                      QStringLiteral("send the two answers around the erase in one write")});
    option("fault",
           "STEP=KIND[,after=N][,times=N]; may be given again. Steps: sync, connect, version, "
           "download, header, erase, ready, frame:K, last. Kinds: silence, refuse, garbage, noise, "
           "late:MS, duplicate, unplug",
           "FAULT");
    option("replug-ms", "plug in again so long after an unplug fault", "MS");
    option("exit-after", "end after so many completed updates; 0: never", "N", "0");
    option("report", "write the report here instead of to the standard output", "FILE");
    option("image", "write the received image here at the end", "FILE");
}

// Everything that the options say; nothing, with the problem, when they make no sense.
std::optional<DeviceOptions> readOptions(const QCommandLineParser &parser, QString &problem)
{
    DeviceOptions options;
    options.directory = parser.value(QStringLiteral("dir"));
    options.name = parser.value(QStringLiteral("name"));
    const auto value = [&](const char *option, qint64 most) {
        return number(parser, QString::fromLatin1(option), 0, most, problem).value_or(0);
    };
    const auto time = [&](const char *option) {
        return std::chrono::milliseconds(value(option, kLongestMs));
    };
    options.modelCode = static_cast<int>(value("model", 255));
    options.eraseTime = time("erase-ms");
    options.answerDelay = time("answer-delay-ms");
    options.baud = static_cast<int>(value("baud", 100000000));
    options.pieceGap = time("split-gap-ms");
    options.joinEraseAnswers = parser.isSet(QStringLiteral("join-erase-answers"));
    if (parser.isSet(QStringLiteral("replug-ms")))
        options.replugAfter = time("replug-ms");
    const QStringList pieces =
        parser.value(QStringLiteral("split")).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &piece : pieces)
        options.connectPieces.push_back(piece.toInt());
    const QStringList faults = parser.values(QStringLiteral("fault"));
    for (const QString &text : faults) {
        if (const auto fault = parseFault(text, &problem))
            options.faults.push_back(*fault);
    }
    if (problem.isEmpty())
        problem = deviceOptionsProblem(options);
    return problem.isEmpty() ? std::optional(options) : std::nullopt;
}

bool writeImage(const QByteArray &image, const QString &file, QString &problem)
{
    if (file.isEmpty())
        return true;
    QFile out(file);
    if (out.open(QIODevice::WriteOnly) && out.write(image) == image.size() && out.flush())
        return true;
    problem = file + QStringLiteral(": ") + out.errorString();
    return false;
}

} // namespace

int runDeviceCommand(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(kDescription);
    addOptions(parser);
    if (const auto exitCode = parse(parser, arguments))
        return *exitCode;
    QString problem;
    const auto options = readOptions(parser, problem);
    const auto exitAfter =
        number(parser, QStringLiteral("exit-after"), 0, 1000000000, problem).value_or(0);
    if (!problem.isEmpty())
        return complainAboutUsage(problem);
    if (!parser.positionalArguments().isEmpty())
        return complainAboutUsage(QStringLiteral("Unexpected argument: ") +
                                  parser.positionalArguments().constFirst());

    SimulatedDevice device(*options);
    if (!device.start(&problem))
        return complain(problem);
    printLine({{QStringLiteral("path"), device.path()},
               {QStringLiteral("terminal"), device.slavePath()}});
    runUntilInterrupted([&] { return exitAfter > 0 && device.report().updates >= exitAfter; });

    const DeviceReport report = device.report();
    if (!writeJson(report.toJson(), parser.value(QStringLiteral("report")), problem) ||
        !writeImage(report.image, parser.value(QStringLiteral("image")), problem))
        return complain(problem);
    return 0;
}

} // namespace vorn
